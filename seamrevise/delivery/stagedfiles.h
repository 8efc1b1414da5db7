#pragma once

#include "delivery/staging.h"

#include <QString>
#include <QStringList>

namespace seamrevise
{

/// Puts single files into a directory that may hold others, each of them whole or not at all. They
/// are written into path() first; commit() gives them their place. An object that goes without it
/// leaves nothing, and what a killed process left the next one removes that uses the same place.
/// Each call returns an empty text, or why it failed, with the file and the cause.
class StagedFiles
{
public:
    /// The place's parent is the directory, made if missing; its name is that of the lock and of
    /// the staging directory there. Inputs are files that must not be hit, under whatever name.
    QString begin(const Place &place, const QStringList &inputs);

    QString path() const { return m_staging.path(); }

    /// Why files of these names cannot be put there: they may replace regular files only.
    QString refusal(const QStringList &names) const;

    QString commit(const QStringList &names);

private:
    Staging m_staging;
    QStringList m_inputs;
};

/// The same for one file, whose directory must exist. Of a link, what it leads to is replaced.
class WholeFile
{
public:
    QString begin(const QString &path, const QStringList &inputs);

    /// Where the file is written.
    QString path() const { return m_files.path() + QLatin1Char('/') + m_name; }

    QString commit() { return m_files.commit({m_name}); }

private:
    StagedFiles m_files;
    QString m_name;
};

} // namespace seamrevise
