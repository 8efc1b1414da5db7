#include "commands/show.h"

#include "commands/delivered.h"
#include "commands/deliverydocument.h"
#include "commands/jsondocument.h"
#include "commands/optiontable.h"
#include "commands/outputfiles.h"
#include "delivery/filesystem.h"
#include "delivery/stagedfiles.h"
#include "exchange/npywriter.h"

#include <QFileInfo>

#include <algorithm>
#include <limits>

namespace seamrevise
{

namespace
{

/// One coefficient over all pixels of a partition.
struct ValueRange
{
    qint32 least = std::numeric_limits<qint32>::max();
    qint32 most = std::numeric_limits<qint32>::min();
    double mean = 0.0;
};

/// A partition's coefficients, pixel by pixel.
struct Shown
{
    ManifestPartition partition;
    CoefficientFormat format;
    QString fileName;
    std::vector<qint32> values;
};

std::vector<ValueRange> rangesOf(const Shown &shown)
{
    const auto stride = static_cast<std::size_t>(shown.format.valuesPerPixel);
    std::vector<ValueRange> ranges(stride);
    for (std::size_t i = 0; i < shown.values.size(); ++i) {
        ValueRange &range = ranges[i % stride];
        range.least = std::min(range.least, shown.values[i]);
        range.most = std::max(range.most, shown.values[i]);
        range.mean += shown.values[i];
    }
    const std::size_t pixelCount = shown.values.size() / stride;
    for (ValueRange &range : ranges)
        range.mean /= static_cast<double>(pixelCount);
    return ranges;
}

/// A line a pixel, in the form of the library's dumps.
void printValues(const Shown &shown, std::ostream &out)
{
    const auto stride = static_cast<std::size_t>(shown.format.valuesPerPixel);
    QByteArray line;
    out << '\n';
    for (std::size_t i = 0; i < shown.values.size(); ++i) {
        line += QByteArray::number(shown.values[i]) + ',';
        if ((i + 1) % stride != 0)
            continue;
        line += '\n';
        out.write(line.constData(), line.size());
        line.clear();
    }
}

void printSummary(const Shown &shown, std::ostream &out)
{
    const NQRect &rect = shown.partition.rect;
    out << "partition    " << shown.partition.number << ", "
        << sizeText(columnsOf(rect), rowsOf(rect)).toStdString() << " pixels, rows " << rect.top()
        << " to " << rect.bottom() << ", columns " << rect.left() << " to " << rect.right() << ", "
        << (shown.partition.isCorrected ? "corrected" : "not corrected") << '\n'
        << "file         " << shown.fileName.toStdString() << '\n'
        << "value         least    mean    most\n";
    int number = 0;
    for (const ValueRange &range : rangesOf(shown))
        out << QStringLiteral("  %1 %2 %3 %4\n")
                   .arg(++number, 5)
                   .arg(range.least, 11)
                   .arg(range.mean, 7, 'f', 1)
                   .arg(range.most, 7)
                   .toStdString();
}

JsonWriter document(const DeliveredSet &set, const Shown &shown)
{
    JsonWriter json;
    beginDocument(json, "show");
    json.member("directory", set.path());
    writeWall(json, set.manifest());
    json.member("partition", shown.partition.number);
    json.member("corrected", shown.partition.isCorrected);
    json.member("file", shown.fileName);
    json.beginArray("values");
    for (const ValueRange &range : rangesOf(shown)) {
        json.beginObject(nullptr, JsonWriter::Inline);
        json.member("least", range.least);
        json.member("mean", range.mean);
        json.member("most", range.most);
        json.endObject();
    }
    json.endArray();
    json.endObject();
    return json;
}

QString writeArray(const Shown &shown, const QString &path)
{
    const NQRect &rect = shown.partition.rect;
    const std::vector<qint64> shape{rowsOf(rect), columnsOf(rect), shown.format.valuesPerPixel};
    if (shown.format.bytesPerValue == 4)
        return writeNpy(path, "<i4", shape, [&](const BlockSink &sink) {
            return sendLittleEndian(shown.values, sink);
        });
    const std::vector<quint16> values(shown.values.begin(), shown.values.end());
    return writeNpy(path, "<u2", shape,
                    [&](const BlockSink &sink) { return sendLittleEndian(values, sink); });
}

QString deliverArray(const Shown &shown, const DeliveredSet &set, const QString &path)
{
    if (isSameInode(QFileInfo(path).absolutePath(), set.path()))
        return path + QStringLiteral(": lies inside the set of files; use another place");
    WholeFile file;
    QString fault = file.begin(path, {});
    if (fault.isEmpty())
        fault = writeArray(shown, file.path());
    return fault.isEmpty() ? file.commit() : fault;
}

} // namespace

void declareShow(CLI::App &app, ShowOptions &options)
{
    addPath(app, "DIR", "", options.directory, "the delivery")->required();
    addNumber(app, "NUMBER", "", options.number, 1, std::numeric_limits<int>::max(),
              "the partition's number")
        ->default_str("")
        ->required();
    CLI::Option *const npy
        = addPath(app, "--npy", "FILE", options.npyFile,
                  "write the values as a NumPy array of rows, columns and values");
    addFlag(app, "--text", options.text, "print all values, a line a pixel")->excludes(npy);
}

int show(const ShowOptions &options, std::ostream &out, std::ostream &err)
{
    if (const int code = checkDocumentPlace(
            options.common,
            {{options.directory, "the set of files"}, {options.npyFile, "the array"}}, err))
        return code;
    DeliveredSet set;
    if (const int code = openDelivered(options.directory, options.common, set, err))
        return code;
    const ManifestPartition *const partition = set.manifest().partition(options.number);
    if (!partition)
        return reportFault(
            Exit_Usage,
            QStringLiteral("%1: has no partition %2").arg(set.path()).arg(options.number), err);
    Shown shown{*partition, coefficientFormats(set.manifest().layerCount).front(), {}, {}};
    shown.fileName = fileNameOf(set.manifest(), options.number, shown.format);
    QString fault = set.read(*partition, shown.format, shown.values);
    if (!fault.isEmpty())
        return reportFault(Exit_Input, fault, err);
    if (!options.npyFile.isEmpty())
        fault = deliverArray(shown, set, options.npyFile);
    if (fault.isEmpty())
        fault = writeDocument(options.common, document(set, shown), out);
    if (!fault.isEmpty())
        return reportFault(Exit_Output, fault, err);
    if (options.common.showsText() && options.text)
        printValues(shown, out);
    else if (options.common.showsText())
        printSummary(shown, out);
    return Exit_Done;
}

} // namespace seamrevise
