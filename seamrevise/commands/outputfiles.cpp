#include "commands/outputfiles.h"

#include "commands/exitcode.h"
#include "delivery/filesystem.h"
#include "delivery/stagedfiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace seamrevise
{

namespace
{

/// The name with the links on the way to it resolved, as far as it exists.
QString resolvedName(const QString &path)
{
    const QFileInfo file(QDir::cleanPath(QFileInfo(path).absoluteFilePath()));
    return file.exists() || file.isRoot()
        ? file.canonicalFilePath()
        : resolvedName(file.absolutePath()) + QLatin1Char('/') + file.fileName();
}

/// Whether a file has another name in a directory.
bool hasNameIn(const QString &directory, const QString &path)
{
    const QStringList names = entriesOf(directory);
    return std::any_of(names.begin(), names.end(), [&](const QString &name) {
        return isSameInode(directory + QLatin1Char('/') + name, path);
    });
}

/// What speaks against a document beside something that is used; empty if nothing does. A link
/// lies where its name is, too.
QString clash(const QString &document, const UsedPath &used)
{
    if (isSameFile(document, used.path))
        return QStringLiteral("is ");
    const bool liesThere = isWithin(document, used.path)
        || isWithin(QFileInfo(document).absolutePath(), used.path)
        || hasNameIn(used.path, document);
    return liesThere ? QStringLiteral("lies in ") : QString();
}

QString writePlainly(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    const bool isWritten = file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)
        && file.write(bytes) == bytes.size();
    return isWritten ? QString() : path + QStringLiteral(": ") + file.errorString();
}

} // namespace

bool isSameFile(const QString &first, const QString &second)
{
    return isSameInode(first, second) || resolvedName(first) == resolvedName(second);
}

bool isWithin(const QString &path, const QString &directory)
{
    const QFileInfo file(resolvedName(path));
    return isSameFile(path, directory) || (!file.isRoot() && isWithin(file.path(), directory));
}

int checkDocumentPlace(const CommonOptions &options, const std::vector<UsedPath> &usedPaths,
                       std::ostream &err)
{
    const QString &document = options.jsonFile;
    if (document.isEmpty() || document == QLatin1String("-"))
        return Exit_Done;
    const auto refuse = [&](const QString &fault) {
        return reportFault(Exit_Output,
                           document + QStringLiteral(": %1; use another --json").arg(fault), err);
    };
    // The command may be what makes it lead somewhere.
    if (QFileInfo(document).isSymLink() && !QFileInfo::exists(document))
        return refuse(QStringLiteral("is a link to nothing"));
    for (const UsedPath &used : usedPaths) {
        const QString fault = used.path.isEmpty() ? QString() : clash(document, used);
        if (!fault.isEmpty())
            return refuse(fault + QLatin1String(used.what));
    }
    return Exit_Done;
}

QString writeDocument(const CommonOptions &options, const JsonWriter &json, std::ostream &out)
{
    const QString &path = options.jsonFile;
    const QByteArray &bytes = json.text();
    if (path == QLatin1String("-"))
        out << bytes.toStdString();
    if (path.isEmpty() || path == QLatin1String("-"))
        return {};
    if (QFileInfo::exists(path) && !QFileInfo(path).isFile())
        return writePlainly(path, bytes);
    WholeFile file;
    QString fault = file.begin(path, {});
    if (fault.isEmpty())
        fault = writeSynced(file.path(), bytes);
    return fault.isEmpty() ? file.commit() : fault;
}

} // namespace seamrevise
