#include "commands/outputfiles.h"

#include "delivery/filesystem.h"
#include "delivery/stagedfiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

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

bool isInside(const QString &path, const QString &directory)
{
    const QString parent = QFileInfo(resolvedName(path)).path();
    return isSameFile(parent, directory) || (!QDir(parent).isRoot() && isInside(parent, directory));
}

QString documentFault(const CommonOptions &options, const QString &input, const QString &outputDir)
{
    const QString &name = options.jsonFile;
    if (name.isEmpty() || name == QLatin1String("-"))
        return {};
    if (isSameFile(name, input))
        return name + QStringLiteral(": is the database; use another --json");
    if (!outputDir.isEmpty() && (isSameFile(name, outputDir) || isInside(name, outputDir)))
        return name + QStringLiteral(": lies in the output directory; use another --json");
    return {};
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
