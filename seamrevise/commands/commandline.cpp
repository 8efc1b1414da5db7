#include "commands/commandline.h"

#include "commands/check.h"
#include "commands/compare.h"
#include "commands/exitcode.h"
#include "commands/export.h"
#include "commands/help.h"
#include "commands/import.h"
#include "commands/info.h"
#include "commands/loglines.h"
#include "commands/optiontable.h"
#include "commands/restore.h"
#include "commands/revise.h"
#include "commands/show.h"
#include "commands/simulate.h"
#include "commands/upgrade.h"
#include "commands/verify.h"
#include "process/parallel.h"
#include "store/databaseaddress.h"

#include <CLI/CLI.hpp> // App.hpp only declares what making an App needs

#include <algorithm>
#include <atomic>
#include <exception>
#include <new>

namespace seamrevise
{

namespace
{

struct Command;

/// Where a command runs, and with which words behind its name.
struct Call
{
    const Command &command;
    std::vector<std::string> words;
    bool errIsTerminal;
    std::ostream &out;
    std::ostream &err;
};

struct Command
{
    const char *name;
    const char *summary;
    const char *example;
    int (*run)(const Call &call);
};

/// Parses the words of a command into its options and runs it, unless they ask for help.
template <typename Options, void (*declare)(CLI::App &, Options &),
          int (*command)(const Options &, std::ostream &, std::ostream &)>
int runAs(const Call &call);

const Command commands[] = {
    {"simulate", "Makes a screen database of a plausible LED wall.",
     "seamrevise simulate wall.db --size 1920x1080 --grid 6x4",
     runAs<SimulateOptions, declareSimulate, simulate>},
    {"revise", "Revises the seams of a wall and checks what it has written.",
     "seamrevise revise wall.db -o corrected", runAs<ReviseOptions, declareRevise, revise>},
    {"check", "Says what would go wrong or look wrong if a wall were revised; writes nothing.",
     "seamrevise check wall.db --step-limit 0.5%", runAs<CheckOptions, declareCheck, check>},
    {"import", "Takes measured coefficients into a screen database.",
     "seamrevise import wall.json wall.db",
     runAs<ImportOptions, declareImport, importCoefficients>},
    {"export", "Writes the coefficients of a screen database to files.",
     "seamrevise export wall.db -o measured",
     runAs<ExportOptions, declareExport, exportCoefficients>},
    {"info", "Shows what a screen database holds, and who wrote it.", "seamrevise info wall.db",
     runAs<InfoOptions, declareInfo, info>},
    {"upgrade", "Makes a screen database of an older version one of today.",
     "seamrevise upgrade wall.db", runAs<UpgradeOptions, declareUpgrade, upgrade>},
    {"verify", "Checks that a delivery is whole and as it was delivered.",
     "seamrevise verify corrected wall.db", runAs<VerifyOptions, declareVerify, verify>},
    {"compare", "Says how much the coefficients of two deliveries differ.",
     "seamrevise compare corrected corrected.20260131-120000",
     runAs<CompareOptions, declareCompare, compare>},
    {"restore", "Puts the set back that a delivery replaced.", "seamrevise restore corrected",
     runAs<RestoreOptions, declareRestore, restore>},
    {"show", "Shows the delivered coefficients of a partition.", "seamrevise show corrected 7",
     runAs<ShowOptions, declareShow, show>},
};

/// A wrong command line.
class UsageError : public std::exception
{
public:
    /// @param command  the one whose help tells more; null: the program's
    UsageError(const QString &message, const Command *command)
        : m_text(
            QStringLiteral("%1\nseamrevise %2--help tells more")
                .arg(message, command ? QLatin1String(command->name) + QLatin1Char(' ') : QString())
                .toStdString())
    {
    }
    const char *what() const noexcept override { return m_text.c_str(); }

private:
    const std::string m_text;
};

QStringList commandNames()
{
    QStringList names;
    for (const Command &command : commands)
        names.push_back(QLatin1String(command.name));
    return names;
}

const Command &commandNamed(const std::string &name)
{
    const auto *const found
        = std::find_if(std::begin(commands), std::end(commands),
                       [&](const Command &command) { return command.name == name; });
    if (found != std::end(commands))
        return *found;
    const QString word = QString::fromStdString(name);
    throw UsageError(
        QStringLiteral("there is no command ") + word + nearestHint(word, commandNames()), nullptr);
}

int showVersion(std::ostream &out)
{
    out << "seamrevise " << SEAMREVISE_VERSION << '\n';
    return Exit_Done;
}

int showProgramHelp(std::ostream &out)
{
    out << "Example: " << commands[0].example << "\n         " << commands[1].example << R"(

Makes the seams between the partitions of an LED wall disappear.

Usage: seamrevise COMMAND [arguments and options]

)";
    std::vector<HelpLine> lines;
    for (const Command &command : commands)
        lines.push_back({QLatin1String(command.name), QLatin1String(command.summary)});
    lines.push_back({QStringLiteral("help COMMAND"),
                     QStringLiteral("The options of a command; also COMMAND --help.")});
    lines.push_back({QStringLiteral("-h, --help"), QStringLiteral("Shows this text.")});
    lines.push_back({QStringLiteral("-V, --version"), QStringLiteral("Shows the version.")});
    printHelpLines(lines, out);
    out << R"(
Exit codes: 0 done, 1 a check that was asked for found differences, 2 wrong usage,
3 database, imported file or delivery unusable, 4 output not written or not read back,
5 internal error or no memory, 130 and 143 ended by Ctrl-C or SIGTERM.
)";
    return Exit_Done;
}

int showCommandHelp(const Command &command, const CLI::App &app, std::ostream &out)
{
    out << "Example: " << command.example << "\n\n" << command.summary << "\n\n";
    printOptions(app, out);
    return Exit_Done;
}

/// "there is no option --outptu; did you mean --output?", or an argument too many.
QString unknownWord(const std::vector<std::string> &unknown, const CLI::App &app)
{
    const bool isBehindDashes = unknown.front() == "--" && unknown.size() > 1;
    const QString word = QString::fromStdString(unknown[isBehindDashes ? 1 : 0]);
    if (isBehindDashes || !word.startsWith(QLatin1Char('-')))
        return QStringLiteral("unexpected argument ") + word;
    QStringList names;
    for (const CLI::Option *const option : app.get_options())
        names += QString::fromStdString(option->get_name(false, true)).split(QLatin1Char(','));
    const QString name = word.section(QLatin1Char('='), 0, 0);
    const QString hint = nearestHint(name, names);
    return QStringLiteral("there is no option ") + name
        + (hint.isEmpty() ? QStringLiteral("; a name that begins with a dash goes behind --")
                          : hint);
}

/// The first that must be given and is not; empty if there is none.
QString missingWord(const CLI::App &app)
{
    for (const CLI::Option *const option : app.get_options()) {
        if (!option->get_required() || option->count() != 0)
            continue;
        const QString name = QString::fromStdString(option->get_name());
        return option->get_positional() ? QStringLiteral("name a ") + name.toLower()
                                        : name + QStringLiteral(" is missing");
    }
    return {};
}

/// What is wrong with words that were not parsed, the most telling first.
QString parseFault(const CLI::ParseError &error, const CLI::App &app,
                   const std::vector<std::string> &words)
{
    const std::vector<std::string> unknown = app.remaining();
    if (!unknown.empty())
        return unknownWord(unknown, app);
    if (dynamic_cast<const CLI::ArgumentMismatch *>(&error)) // only the last word can lack a value
        return QString::fromStdString(words.back()) + QStringLiteral(" needs a value behind it");
    const QString missing = missingWord(app);
    if (dynamic_cast<const CLI::RequiredError *>(&error) && !missing.isEmpty())
        return missing;
    return QString::fromUtf8(error.what());
}

template <typename Options, void (*declare)(CLI::App &, Options &),
          int (*command)(const Options &, std::ostream &, std::ostream &)>
int runAs(const Call &call)
{
    Options options;
    CLI::App app("", call.command.name);
    app.set_help_flag(); // the one it has from the start would be the first
    declare(app, options);
    addCommonOptions(app, options.common);
    const CLI::Option *const help = app.set_help_flag("-h,--help", "show this text");
    const CLI::Option *const version
        = app.add_flag("-V,--version")->description("show the version");
    try {
        app.parse(std::vector<std::string>(call.words.rbegin(), call.words.rend()));
    } catch (const CLI::ParseError &error) {
        if (help->count() != 0)
            return showCommandHelp(call.command, app, call.out);
        if (version->count() == 0)
            throw UsageError(parseFault(error, app, call.words), &call.command);
    }
    if (version->count() != 0)
        return showVersion(call.out);
    options.common.showProgress = call.errIsTerminal && !options.common.quiet;
    setJobs(options.common.jobs.value_or(0));
    const LogLines log(options.common.verbose ? &call.err : nullptr);
    return command(options, call.out, call.err);
}

void checkUtf8(const std::vector<std::string> &words)
{
    for (const std::string &word : words) {
        if (QString::fromStdString(word).toStdString() != word)
            throw UsageError(QStringLiteral("this is not valid UTF-8: ")
                                 + QString::fromStdString(word),
                             nullptr);
    }
}

/// No word with a password may be shown, whatever else is wrong with it.
void checkPasswords(const std::vector<std::string> &words)
{
    for (const std::string &word : words) {
        if (carriesPassword(QString::fromStdString(word)))
            throw UsageError(QStringLiteral("a URL carries a password; passwords come from"
                                            " PGPASSFILE or PGPASSWORD"),
                             nullptr);
    }
}

int dispatch(std::vector<std::string> words, bool errIsTerminal, std::ostream &out,
             std::ostream &err)
{
    checkPasswords(words);
    checkUtf8(words);
    if (words.empty())
        throw UsageError(QStringLiteral("name a command: ")
                             + commandNames().join(QStringLiteral(", ")),
                         nullptr);
    if (words.front() == "-V" || words.front() == "--version")
        return showVersion(out);
    if (words.front() == "help" && words.size() > 1)
        words = {words[1], "--help"};
    if (words.front() == "help" || words.front() == "-h" || words.front() == "--help")
        return showProgramHelp(out);
    const Command &command = commandNamed(words.front());
    return command.run({command, {words.begin() + 1, words.end()}, errIsTerminal, out, err});
}

/// Notes while it lives whether memory ran out: of the engines one only hears that a zone could not
/// be loaded.
class MemoryWatch
{
public:
    MemoryWatch()
        : m_previous(std::set_new_handler(&MemoryWatch::note))
    {
        flag() = false;
    }
    ~MemoryWatch() { std::set_new_handler(m_previous); }
    MemoryWatch(const MemoryWatch &) = delete;
    MemoryWatch &operator=(const MemoryWatch &) = delete;

    bool ranOut() const { return flag(); }

private:
    [[noreturn]] static void note()
    {
        flag() = true;
        throw std::bad_alloc();
    }

    static std::atomic<bool> &flag()
    {
        static std::atomic<bool> instance{false};
        return instance;
    }

    const std::new_handler m_previous;
};

int noMemory(std::ostream &err)
{
    err << "seamrevise: there is not enough memory\n";
    return Exit_Internal;
}

int runCaught(const std::vector<std::string> &words, bool errIsTerminal, std::ostream &out,
              std::ostream &err)
{
    try {
        return dispatch(words, errIsTerminal, out, err);
    } catch (const UsageError &error) {
        err << "seamrevise: " << error.what() << '\n';
        return Exit_Usage;
    } catch (const std::bad_alloc &) {
        return noMemory(err);
    } catch (const std::exception &error) {
        err << "seamrevise: " << error.what() << '\n';
        return Exit_Internal;
    }
}

} // namespace

int runCommandLine(const std::vector<std::string> &words, bool errIsTerminal, std::ostream &out,
                   std::ostream &err)
{
    const MemoryWatch memory;
    const int code = runCaught(words, errIsTerminal, out, err);
    if (code > Exit_Usage && code != Exit_Internal && memory.ranOut())
        return noMemory(err);
    if (out.flush() || code > Exit_Different)
        return code;
    err << "seamrevise: the standard output cannot be written; is the disk full?\n";
    return Exit_Output;
}

} // namespace seamrevise
