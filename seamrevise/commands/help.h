#pragma once

#include <QString>
#include <QStringList>

#include <CLI/App.hpp>

#include <ostream>

namespace seamrevise
{

/// A name beside what is said about it, as the help lists commands and options.
struct HelpLine
{
    QString name;
    QString text;
};

/// Prints names in one column and texts in another, which are wrapped at 80 columns.
void printHelpLines(const std::vector<HelpLine> &lines, std::ostream &out);

/// Prints how a command is called, "revise DATABASE -o DIR [options]", and its arguments and
/// options, all as declared.
void printOptions(const CLI::App &app, std::ostream &out);

/// "; did you mean --output?" for a word that comes near to one of the names; else empty.
QString nearestHint(const QString &word, const QStringList &names);

} // namespace seamrevise
