#include "commands/optiontable.h"
#include "commands/revise.h"

#include <QLocale>

namespace seamrevise
{

namespace
{

QString numberText(double number)
{
    return QString::number(number, 'g', QLocale::FloatingPointShortest);
}

QString weightsText(const LuminanceWeights &weights)
{
    QStringList texts;
    for (const double weight : weights)
        texts.push_back(numberText(weight));
    return texts.join(QLatin1Char(','));
}

} // namespace

void declareRevise(CLI::App &app, ReviseOptions &options)
{
    addDatabase(app, options.database);
    addPath(app, "-o,--output", "DIR", options.outputDir,
            "directory of the output, made if missing")
        ->required();
    CLI::Option *const table
        = addFlag(app, "--table", options.table,
                  "write the whole screen instead of files: coefficients.npy, and packed.bin for"
                  " layered coefficients");
    addFlag(app, "--files", options.files,
            "write encrypted coefficient files, a set per partition (the default)")
        ->excludes(table);
    declareWallOptions(app, options);
    addPath(app, "--dumps", "DIR", options.dumpDir,
            "write text dumps there, outside the output directory; made if missing");
    addFlag(app, "--force", options.force, "replace the delivery that is there");
    addNumber(app, "--keep", "COUNT", options.keep, 0, std::numeric_limits<int>::max(),
              "how many replaced deliveries stay beside the output directory");
    addFlag(app, "--dry-run", options.dryRun,
            "do everything but put the files in place, and leave nothing");
}

QStringList resolvedCommand(const ReviseOptions &options, const baseCommon::NQSize &band)
{
    QStringList words{QStringLiteral("revise"), options.database, QStringLiteral("--output"),
                      options.outputDir,
                      options.table ? QStringLiteral("--table") : QStringLiteral("--files")};
    if (options.layerCount > 0)
        words << QStringLiteral("--layers") << QString::number(options.layerCount);
    words << QStringLiteral("--band") << sizeText(band.width(), band.height())
          << QStringLiteral("--margin") << QString::number(options.margin)
          << QStringLiteral("--weights") << weightsText(options.weights) << QStringLiteral("--keep")
          << QString::number(options.keep);
    if (options.stepLimit)
        words << QStringLiteral("--step-limit") << numberText(*options.stepLimit);
    if (!options.dumpDir.isEmpty())
        words << QStringLiteral("--dumps") << options.dumpDir;
    if (options.force)
        words << QStringLiteral("--force");
    return words;
}

} // namespace seamrevise
