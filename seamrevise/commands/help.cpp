#include "commands/help.h"

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

namespace seamrevise
{

namespace
{

constexpr int pageWidth = 80;

/// The lines of a text whose words are separated by single blanks.
QStringList wrapped(const QString &text, int width)
{
    QStringList lines(QString{});
    for (const QString &word : text.split(QLatin1Char(' '))) {
        if (lines.last().isEmpty())
            lines.last() = word;
        else if (lines.last().size() + 1 + word.size() <= width)
            lines.last() += QLatin1Char(' ') + word;
        else
            lines.push_back(word);
    }
    return lines;
}

QString placeholderOf(const CLI::Option &option)
{
    const QString type = QString::fromStdString(option.get_type_name());
    return option.get_items_expected_max() == 0 || type.isEmpty() ? QString()
                                                                  : QLatin1Char(' ') + type;
}

/// "-o, --output DIR".
QString spellings(const CLI::Option &option)
{
    const QString names = QString::fromStdString(option.get_name(false, true));
    return QString(names).replace(QLatin1Char(','), QStringLiteral(", ")) + placeholderOf(option);
}

HelpLine lineOf(const CLI::Option &option)
{
    const QString defaultText = QString::fromStdString(option.get_default_str());
    const QString text = QString::fromStdString(option.get_description());
    return {option.get_positional() ? QString::fromStdString(option.get_name(true))
                                    : spellings(option),
            defaultText.isEmpty() ? text : text + QStringLiteral(" (%1)").arg(defaultText)};
}

/// " -o DIR" of an option that must be given, " DATABASE" of an argument.
QString usageOf(const CLI::Option &option)
{
    if (!option.get_positional() && !option.get_required())
        return {};
    const QString name = option.get_positional()
        ? QString::fromStdString(option.get_name(true))
        : spellings(option).section(QStringLiteral(", "), 0, 0).section(QLatin1Char(' '), 0, 0)
            + placeholderOf(option);
    return QLatin1Char(' ') + (option.get_required() ? name : QStringLiteral("[%1]").arg(name));
}

/// How many letters must be added, dropped or replaced to make one word of the other.
int editDistance(const QString &from, const QString &to)
{
    std::vector<int> costs(static_cast<std::size_t>(to.size()) + 1);
    std::iota(costs.begin(), costs.end(), 0);
    for (int row = 1; row <= from.size(); ++row) {
        int diagonal = std::exchange(costs[0], row);
        for (std::size_t col = 1; col < costs.size(); ++col) {
            const int replaced
                = diagonal + (from[row - 1] != to[static_cast<int>(col) - 1] ? 1 : 0);
            diagonal = costs[col];
            costs[col] = std::min({replaced, costs[col] + 1, costs[col - 1] + 1});
        }
    }
    return costs.back();
}

} // namespace

void printHelpLines(const std::vector<HelpLine> &lines, std::ostream &out)
{
    int column = 0;
    for (const HelpLine &line : lines)
        column = std::max(column, line.name.size() + 5);
    for (const HelpLine &line : lines) {
        QString start = QStringLiteral("  ") + line.name;
        for (const QString &text : wrapped(line.text, pageWidth - column)) {
            out << start.leftJustified(column).toStdString() << text.toStdString() << '\n';
            start.clear();
        }
    }
}

void printOptions(const CLI::App &app, std::ostream &out)
{
    QString usage = QString::fromStdString(app.get_name());
    std::vector<HelpLine> lines;
    for (const bool positional : {true, false}) {
        for (const CLI::Option *const option : app.get_options()) {
            if (option->get_positional() != positional)
                continue;
            usage += usageOf(*option);
            lines.push_back(lineOf(*option));
        }
    }
    lines.push_back({QStringLiteral("--"),
                     QStringLiteral("what follows are names, even if they begin with a dash")});
    out << "Usage: seamrevise " << usage.toStdString() << " [options]\n\n";
    printHelpLines(lines, out);
}

QString nearestHint(const QString &word, const QStringList &names)
{
    QString nearest;
    int least = std::min(3, (word.size() + 1) / 2);
    for (const QString &name : names) {
        const bool isBeginning = word.size() > 2 && name.startsWith(word);
        const int distance = isBeginning ? 0 : editDistance(word, name);
        if (distance < least) {
            least = distance;
            nearest = name;
        }
    }
    return nearest.isEmpty() ? QString() : QStringLiteral("; did you mean %1?").arg(nearest);
}

} // namespace seamrevise
