#include "commands/outputfiles.h"

#include "exchange/npywriter.h"

#include <QFile>
#include <QFileInfo>

namespace seamrevise
{

namespace
{

/// The name with the links on the way to it resolved, as far as it exists.
QString resolvedName(const QString &path)
{
    const QFileInfo file(path);
    return file.exists()
        ? file.canonicalFilePath()
        : QFileInfo(file.absolutePath()).canonicalFilePath() + QLatin1Char('/') + file.fileName();
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
    return resolvedName(first) == resolvedName(second);
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
    return writeChecked(
        path, [&](const BlockSink &sink) { return sink(bytes.constData(), bytes.size()); });
}

} // namespace seamrevise
