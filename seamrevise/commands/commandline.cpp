#include "commands/commandline.h"

#include "commands/argumentvalues.h"
#include "commands/exitcode.h"
#include "commands/loglines.h"
#include "commands/revise.h"
#include "commands/simulate.h"

#include <QCommandLineOption>
#include <QCommandLineParser>

#include <exception>
#include <initializer_list>
#include <limits>
#include <new>
#include <optional>
#include <string>

namespace seamrevise
{

namespace
{

constexpr int mostLayers = 64;

const char *const programHelp = R"(Makes the seams between the partitions of an LED wall disappear.

Usage: seamrevise simulate DATABASE --size WIDTHxHEIGHT --grid COLUMNSxROWS [options]
       seamrevise revise DATABASE -o DIR [options]
       seamrevise COMMAND --help

Options:
  -h, --help      show this text
  --version       show the version

Exit codes: 0 done, 1 a check found differences, 2 wrong usage, 3 database unusable,
4 output not written or not read back, 5 internal error.
)";

const char *const simulateHelp = R"(Makes a screen database of a plausible LED wall.

Usage: seamrevise simulate DATABASE --size WIDTHxHEIGHT --grid COLUMNSxROWS [options]

  --size WIDTHxHEIGHT   pixels of the wall
  --grid COLUMNSxROWS   partitions of the wall; they need not divide its size evenly
  --band WIDTHxHEIGHT   pixels by which stored zones reach beyond partitions (16x16)
  --seed NUMBER         another number, another wall (1)
  --uncorrected LIST    numbers of partitions without coefficients: 5,9
  --layers COUNT        store layered coefficients too
  --force               overwrite the database
  -v, --verbose         show the log lines of the library on the error output
  -h, --help            show this text
  --version             show the version
)";

const char *const reviseHelp = R"(Revises the seams of a wall and checks what it has written.

Usage: seamrevise revise DATABASE -o DIR [options]

  -o, --output DIR      directory of the output, made if missing
  --files               write encrypted coefficient files, a set per partition (the default)
  --table               write the whole screen instead: coefficients.npy, and packed.bin
                        for layered coefficients
  --layers COUNT        revise the layered coefficients of that layer count
  --band WIDTHxHEIGHT   pixels by which zones reach beyond partitions (the database's)
  --margin PIXELS       pixels left as they are at both ends of a blended strip (0)
  --dumps DIR           write text dumps there, made if missing
  -v, --verbose         show the log lines of the library on the error output
  -h, --help            show this text
  --version             show the version
)";

/// A wrong command line; what() says what is wrong with it.
class UsageError : public std::exception
{
public:
    explicit UsageError(const QString &message)
        : m_message(message.toStdString())
    {
    }
    const char *what() const noexcept override { return m_message.c_str(); }

private:
    const std::string m_message;
};

/// The arguments of one command.
class Arguments
{
public:
    /// Option names without dashes; "o/output" has two.
    Arguments(std::initializer_list<const char *> valueOptions,
              std::initializer_list<const char *> switches)
    {
        for (const char *const names : {"v/verbose", "h/help", "version"})
            m_parser.addOption(QCommandLineOption(spellings(names)));
        for (const char *const names : switches)
            m_parser.addOption(QCommandLineOption(spellings(names)));
        for (const char *const names : valueOptions)
            m_parser.addOption(
                QCommandLineOption(spellings(names), QString(), QStringLiteral("value")));
    }

    void parse(const QStringList &words)
    {
        if (!m_parser.parse(words))
            throw UsageError(m_parser.errorText());
    }

    bool has(const char *name) const { return m_parser.isSet(QString::fromLatin1(name)); }
    QString text(const char *name) const { return m_parser.value(QString::fromLatin1(name)); }

    /// The only argument that is no option.
    QString database() const
    {
        const QStringList names = m_parser.positionalArguments();
        if (names.isEmpty() || names.first().isEmpty())
            throw UsageError(QStringLiteral("name a database"));
        if (names.size() > 1)
            throw UsageError(QStringLiteral("unexpected argument ") + names[1]);
        return names.first();
    }

    void require(const char *name) const
    {
        if (!has(name) || text(name).isEmpty())
            throw UsageError(QStringLiteral("--%1 is missing").arg(QLatin1String(name)));
    }

    baseCommon::NQSize size(const char *name, int least) const
    {
        return valueOrThrow(name, parseSize(text(name), least),
                            QStringLiteral("two numbers from %1 to 65535 like 16x9").arg(least));
    }

    int number(const char *name, int least, int most) const
    {
        return valueOrThrow(name, parseInt(text(name), least, most),
                            QStringLiteral("a number from %1 to %2").arg(least).arg(most));
    }

    std::vector<int> numbers(const char *name, int most) const
    {
        return valueOrThrow(name, parseNumbers(text(name), most),
                            QStringLiteral("numbers from 1 to %1 like 5,9").arg(most));
    }

private:
    static QStringList spellings(const char *names)
    {
        return QString::fromLatin1(names).split(QLatin1Char('/'));
    }

    template <typename Value>
    Value valueOrThrow(const char *name, const std::optional<Value> &value,
                       const QString &wanted) const
    {
        if (!value)
            throw UsageError(QStringLiteral("--%1 takes %2, not \"%3\"")
                                 .arg(QLatin1String(name), wanted, text(name)));
        return *value;
    }

    QCommandLineParser m_parser;
};

SimulateOptions simulateOptions(const Arguments &arguments)
{
    SimulateOptions options;
    options.database = arguments.database();
    arguments.require("size");
    arguments.require("grid");
    options.size = arguments.size("size", 1);
    options.grid = arguments.size("grid", 1);
    if (qint64{options.size.width()} * options.size.height() > std::numeric_limits<int>::max())
        throw UsageError(QStringLiteral("--size has too many pixels"));
    if (options.grid.width() > options.size.width()
        || options.grid.height() > options.size.height())
        throw UsageError(QStringLiteral("--grid has more partitions than --size has pixels"));
    if (arguments.has("band"))
        options.band = arguments.size("band", 0);
    if (arguments.has("seed"))
        options.seed
            = static_cast<quint64>(arguments.number("seed", 0, std::numeric_limits<int>::max()));
    if (arguments.has("uncorrected"))
        options.uncorrected
            = arguments.numbers("uncorrected", options.grid.width() * options.grid.height());
    if (arguments.has("layers"))
        options.layerCount = arguments.number("layers", 1, mostLayers);
    options.overwrite = arguments.has("force");
    return options;
}

ReviseOptions reviseOptions(const Arguments &arguments)
{
    ReviseOptions options;
    options.database = arguments.database();
    arguments.require("output");
    options.outputDir = arguments.text("output");
    if (arguments.has("files") && arguments.has("table"))
        throw UsageError(QStringLiteral("--files and --table exclude each other"));
    options.table = arguments.has("table");
    if (arguments.has("band"))
        options.band = arguments.size("band", 0);
    if (arguments.has("margin"))
        options.margin = arguments.number("margin", 0, std::numeric_limits<int>::max());
    if (arguments.has("layers"))
        options.layerCount = arguments.number("layers", 1, mostLayers);
    if (arguments.has("dumps")) {
        arguments.require("dumps");
        options.dumpDir = arguments.text("dumps");
    }
    return options;
}

struct Surroundings
{
    bool errIsTerminal;
    std::ostream &out;
    std::ostream &err;
};

int showVersion(std::ostream &out)
{
    out << "seamrevise " << SEAMREVISE_VERSION << '\n';
    return Exit_Done;
}

/// Parses one command's arguments and runs it, unless they ask for something else.
template <typename Options>
int runCommand(Arguments &&arguments, const QStringList &words, const char *help,
               Options (*optionsFrom)(const Arguments &),
               int (*command)(const Options &, std::ostream &, std::ostream &),
               const Surroundings &around)
{
    arguments.parse(words);
    if (arguments.has("help")) {
        around.out << help;
        return Exit_Done;
    }
    if (arguments.has("version"))
        return showVersion(around.out);
    Options options = optionsFrom(arguments);
    options.showProgress = around.errIsTerminal;
    const LogLines log(arguments.has("verbose") ? &around.err : nullptr);
    return command(options, around.out, around.err);
}

int dispatch(const QStringList &arguments, const Surroundings &around)
{
    const QString command = arguments.value(1);
    const QStringList words = arguments.mid(1); // the parser skips the first
    if (command == QLatin1String("simulate"))
        return runCommand({{"size", "grid", "band", "seed", "uncorrected", "layers"}, {"force"}},
                          words, simulateHelp, simulateOptions, simulate, around);
    if (command == QLatin1String("revise"))
        return runCommand({{"o/output", "band", "margin", "layers", "dumps"}, {"files", "table"}},
                          words, reviseHelp, reviseOptions, revise, around);
    if (command == QLatin1String("-h") || command == QLatin1String("--help")) {
        around.out << programHelp;
        return Exit_Done;
    }
    if (command == QLatin1String("--version"))
        return showVersion(around.out);
    throw UsageError(command.isEmpty() ? QStringLiteral("name a command: simulate or revise")
                                       : QStringLiteral("there is no command ") + command);
}

} // namespace

int runCommandLine(const QStringList &arguments, bool errIsTerminal, std::ostream &out,
                   std::ostream &err)
{
    const Surroundings around{errIsTerminal, out, err};
    try {
        return dispatch(arguments, around);
    } catch (const UsageError &error) {
        err << "seamrevise: " << error.what() << "\nseamrevise --help tells more\n";
        return Exit_Usage;
    } catch (const std::bad_alloc &) {
        err << "seamrevise: there is not enough memory\n";
    } catch (const std::exception &error) {
        err << "seamrevise: " << error.what() << '\n';
    }
    return Exit_Internal;
}

} // namespace seamrevise
