#include "commands/optiontable.h"

#include "exchange/coefficients.h"
#include "store/databaseaddress.h"

#include <utility>

namespace seamrevise
{

namespace
{

constexpr int mostJobs = 1024;

/// The long one of "-o,--output".
QString longName(const char *names)
{
    return QString::fromLatin1(names).section(QLatin1Char(','), -1);
}

/// Whether a word was meant as an option; a negative number was not.
bool looksLikeOption(const QString &word)
{
    return word.size() > 1 && word[0] == QLatin1Char('-') && !word[1].isDigit();
}

} // namespace

void refuse(const QString &message)
{
    throw CLI::ValidationError(message.toStdString());
}

CLI::Option *addOption(CLI::App &app, const char *names, const ValueKind &kind,
                       const ValueTaker &take, const char *help)
{
    const bool isOption = names[0] == '-';
    const auto takeWords = [=, name = longName(names)](const CLI::results_t &words) {
        if (words.size() > 1 && !kind.mayRepeat)
            refuse(name + QStringLiteral(" is given more than once"));
        for (const std::string &bytes : words) {
            const QString word = QString::fromStdString(bytes);
            if (isOption && looksLikeOption(word))
                refuse(QStringLiteral("%1 takes %2, but an option follows: %3")
                           .arg(name, kind.wanted, word));
            if (!take(word))
                refuse(QStringLiteral("%1 takes %2, not \"%3\"").arg(name, kind.wanted, word));
        }
        return true;
    };
    return app.add_option(names, takeWords, help)
        ->type_name(kind.placeholder)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

CLI::Option *addFlag(CLI::App &app, const char *names, bool &flag, const char *help)
{
    const auto set = [name = longName(names), &flag](const CLI::results_t &words) {
        if (words.back() != "true") // what stands for a flag without a value
            refuse(name + QStringLiteral(" takes no value"));
        flag = true;
        return true;
    };
    return app.add_option(names, set, help)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast)
        ->expected(0);
}

CLI::Option *addPath(CLI::App &app, const char *names, const char *placeholder, QString &path,
                     const char *help)
{
    const auto take = [&path](const QString &text) {
        path = text;
        return !text.isEmpty();
    };
    return addOption(app, names,
                     {placeholder, QStringLiteral("a name (./-name where it begins with a dash)")},
                     take, help);
}

CLI::Option *addNumbers(CLI::App &app, const char *names, std::vector<int> &numbers, int most,
                        const char *help)
{
    const auto take = [&numbers, most](const QString &text) {
        const std::optional<std::vector<int>> values = parseNumbers(text, most);
        numbers = values.value_or(std::vector<int>());
        return values.has_value();
    };
    return addOption(app, names, {"LIST", QStringLiteral("numbers like 5,9")}, take, help);
}

CLI::Option *addDatabase(CLI::App &app, QString &database)
{
    const auto take = [&database](const QString &text) {
        QString fault;
        parseAddress(text, fault);
        if (!fault.isEmpty())
            refuse(fault);
        database = text;
        return !text.isEmpty();
    };
    return addOption(app, "DATABASE", {"", QStringLiteral("a name")}, take,
                     "the screen database: a file, or postgresql://USER@HOST:PORT/DATABASE/WALL")
        ->required();
}

CLI::Option *addLayers(CLI::App &app, int &layerCount, const char *help)
{
    return addNumber(app, "--layers", "COUNT", layerCount, 1, mostLayers, help)->default_str("");
}

void addCommonOptions(CLI::App &app, CommonOptions &options)
{
    addFlag(app, "-q,--quiet", options.quiet, "no summary, no progress and no warnings");
    addFlag(app, "-v,--verbose", options.verbose,
            "show the log lines of the library on the error output");
    addPath(app, "--json", "FILE", options.jsonFile,
            "write what came of it as a JSON document; - is the standard output, and the text is"
            " left out then");
    addNumber(app, "--jobs", "COUNT", options.jobs, 1, mostJobs,
              "cores for what runs beside the engine; all of them if not given");
}

} // namespace seamrevise
