#include "store/passingfile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include <csignal>

namespace seamrevise
{

namespace
{

bool isGone(int process)
{
    return kill(process, 0) != 0 && errno == ESRCH;
}

} // namespace

PassingFile::PassingFile(const QString &finalPath)
    : m_finalPath(finalPath)
    , m_path(finalPath + QStringLiteral(".%1.part").arg(QCoreApplication::applicationPid()))
    , m_journal(m_path + QStringLiteral("-journal"))
    , m_unfinished(m_path, Unfinished::Files)
    , m_unfinishedJournal(m_journal, Unfinished::Files)
{
    removeStale();
    remove();
}

QString PassingFile::moveToFinalName(bool mayReplace) const
{
    if (!mayReplace) { // not even a file that has come meanwhile
        QFile file(m_path);
        return file.rename(m_finalPath) ? QString() : file.errorString();
    }
    std::error_code error;
    std::filesystem::rename(QFile::encodeName(m_path).toStdString(),
                            QFile::encodeName(m_finalPath).toStdString(), error);
    return QString::fromStdString(error ? error.message() : std::string());
}

/// What processes that no longer exist have left of the same file.
void PassingFile::removeStale() const
{
    const QFileInfo target(m_finalPath);
    const QRegularExpression passingName(QRegularExpression::anchoredPattern(
        QRegularExpression::escape(target.fileName())
        + QStringLiteral("\\.([1-9][0-9]*)\\.part(-journal)?")));
    for (const QString &name : target.dir().entryList(QDir::Files | QDir::Hidden)) {
        const QRegularExpressionMatch match = passingName.match(name);
        if (match.hasMatch() && isGone(match.captured(1).toInt()))
            QFile::remove(target.dir().filePath(name));
    }
}

void PassingFile::remove() const
{
    QFile::remove(m_path);
    QFile::remove(m_journal);
}

} // namespace seamrevise
