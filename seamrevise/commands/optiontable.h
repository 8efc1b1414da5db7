#pragma once

#include "commands/argumentvalues.h"
#include "commands/commonoptions.h"
#include "store/screenlayout.h"

#include <CLI/App.hpp>

#include <functional>
#include <limits>
#include <type_traits>

/// The table of a command's options, of which the parser and the help are made.
///
/// A command declares its options in a function of its own. Each is bound to a member of its
/// Options, whose value at that time is the default that the help names:
///
///     void declareExample(CLI::App &app, ExampleOptions &options)
///     {
///         addDatabase(app, options.database);
///         addPath(app, "-o,--output", "DIR", options.outputDir, "where it goes")->required();
///         addSize(app, "--band", "WIDTHxHEIGHT", options.band, 0, "pixels beyond partitions");
///     }
///
/// Names are "-s,--long" or "--long"; without dashes they are those of an argument, in capitals.
/// An option that is given twice is refused, and so is a value that looks like an option.
namespace seamrevise
{

/// Ends parsing, also from a command's final_callback() that checks what its options are together;
/// the message and a hint at the command's help are shown.
[[noreturn]] void refuse(const QString &message);

/// What an option takes: as its line in the help shows it, and as a message says it.
struct ValueKind
{
    const char *placeholder; ///< "WIDTHxHEIGHT"
    QString wanted;          ///< "two numbers from 1 to 65535 like 16x9"
    bool mayRepeat = false;
};

/// Stores a value that fits; returns false if it does not.
using ValueTaker = std::function<bool(const QString &text)>;

/// An option with a value; the ones below are made of it.
CLI::Option *addOption(CLI::App &app, const char *names, const ValueKind &kind,
                       const ValueTaker &take, const char *help);

CLI::Option *addFlag(CLI::App &app, const char *names, bool &flag, const char *help);
CLI::Option *addPath(CLI::App &app, const char *names, const char *placeholder, QString &path,
                     const char *help);
CLI::Option *addNumbers(CLI::App &app, const char *names, std::vector<int> &numbers, int most,
                        const char *help);

/// The screen database, the first argument of most commands.
CLI::Option *addDatabase(CLI::App &app, QString &database);
CLI::Option *addLayers(CLI::App &app, int &layerCount, const char *help);

/// -q, -v, --json and --jobs.
void addCommonOptions(CLI::App &app, CommonOptions &options);

/// Any of the types of argumentvalues.h: a Target is what `parse` returns, or an optional one if
/// the option has no default.
///     addParsed(app, "--weights", {"R,G,B", "three numbers above 0"}, options.weights,
///               parseWeights, "how much red, green and blue count");
template <typename Parse, typename Target>
CLI::Option *addParsed(CLI::App &app, const char *names, const ValueKind &kind, Target &target,
                       Parse parse, const char *help)
{
    const ValueTaker take = [&target, parse](const QString &text) {
        const auto value = parse(text);
        if (value)
            target = static_cast<Target>(*value);
        return value.has_value();
    };
    return addOption(app, names, kind, take, help);
}

/// The default as the help names it; empty if there is none.
inline std::string defaultText(const baseCommon::NQSize &size)
{
    return sizeText(size.width(), size.height()).toStdString();
}
template <typename Number>
std::enable_if_t<std::is_arithmetic_v<Number>, std::string> defaultText(Number number)
{
    return QString::number(number).toStdString();
}
template <typename Value>
std::string defaultText(const std::optional<Value> &value)
{
    return value ? defaultText(*value) : std::string();
}

template <typename Target>
CLI::Option *addSize(CLI::App &app, const char *names, const char *placeholder, Target &size,
                     int least, const char *help)
{
    return addParsed(
               app, names,
               {placeholder, QStringLiteral("two numbers from %1 to 65535 like 16x9").arg(least)},
               size, [least](const QString &text) { return parseSize(text, least); }, help)
        ->default_str(defaultText(size));
}

template <typename Target>
CLI::Option *addNumber(CLI::App &app, const char *names, const char *placeholder, Target &number,
                       int least, int most, const char *help)
{
    return addParsed(
               app, names,
               {placeholder, QStringLiteral("a number from %1 to %2").arg(least).arg(most)}, number,
               [least, most](const QString &text) { return parseInt(text, least, most); }, help)
        ->default_str(defaultText(number));
}

inline std::string percentText(const std::optional<double> &fraction)
{
    return fraction ? (QString::number(100.0 * *fraction) + QLatin1Char('%')).toStdString() : "";
}

template <typename Target>
CLI::Option *addPercent(CLI::App &app, const char *names, Target &fraction, const char *help)
{
    return addParsed(app, names, {"PERCENT", QStringLiteral("a part of 1 like 0.5% or 0.005")},
                     fraction, parsePercent, help)
        ->default_str(percentText(fraction));
}

} // namespace seamrevise
