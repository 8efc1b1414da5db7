#pragma once

#include <QString>
#include <QStringList>

namespace seamrevise
{

/// Where a directory or a file is to appear, and the names beside it that a run uses meanwhile.
/// The name itself need not exist.
struct Place
{
    QString parent; ///< absolute and without links; need not exist
    QString name;

    QString path() const { return sibling(name); }
    QString sibling(const QString &other) const;
    QString lockFile() const { return sibling(QStringLiteral(".%1.seamrevise.lock").arg(name)); }
    QString mark() const { return sibling(QStringLiteral(".%1.seamrevise.mark").arg(name)); }
    QString staging() const { return sibling(QStringLiteral(".%1.seamrevise.new").arg(name)); }
};

/// The place that a path means: of a link what it leads to, a slash at its end or none. Empty, or
/// why there is none.
QString findPlace(const QString &path, Place &place);

/// Names of the sets that were replaced there, the newest first.
QStringList keptSets(const Place &place);

/// A name for a set that is replaced now, which nothing has yet.
QString newKeptName(const Place &place);

} // namespace seamrevise
