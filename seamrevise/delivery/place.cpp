#include "delivery/place.h"

#include "delivery/filesystem.h"
#include "delivery/manifest.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <tuple>
#include <vector>

namespace seamrevise
{

QString Place::sibling(const QString &other) const
{
    return QDir(parent).filePath(other);
}

QString findPlace(const QString &path, Place &place)
{
    const QFileInfo info(path);
    if (path.isEmpty())
        return QStringLiteral("an empty name");
    if (info.isSymLink() && !info.exists())
        return path + QStringLiteral(": is a link to nothing");
    const QString whole = info.exists() ? info.canonicalFilePath()
                                        : QDir::cleanPath(QDir::current().absoluteFilePath(path));
    const QFileInfo last(whole);
    place.name = last.fileName();
    const QString parent = last.absolutePath();
    const QString canonicalParent = QFileInfo(parent).canonicalFilePath();
    place.parent = canonicalParent.isEmpty() ? parent : canonicalParent;
    if (place.name.isEmpty())
        return path + QStringLiteral(": is the root of the file system");
    return {};
}

namespace
{

/// A name like "out.20260131-235959-2", in parts that sort by age.
struct KeptName
{
    QString second;
    int number = 1; ///< within the second
    QString text;

    bool operator<(const KeptName &other) const
    {
        return std::tie(second, number) < std::tie(other.second, other.number);
    }
};

std::vector<KeptName> keptNames(const Place &place)
{
    const QRegularExpression pattern(QLatin1Char('^') + QRegularExpression::escape(place.name)
                                     + QStringLiteral("\\.(\\d{8}-\\d{6})(?:-(\\d{1,9}))?$"));
    std::vector<KeptName> names;
    for (const QString &name : entriesOf(place.parent)) {
        const QRegularExpressionMatch match = pattern.match(name);
        if (match.hasMatch())
            names.push_back({match.captured(1), std::max(1, match.captured(2).toInt()), name});
    }
    return names;
}

} // namespace

QStringList keptSets(const Place &place)
{
    std::vector<KeptName> found = keptNames(place);
    std::sort(found.rbegin(), found.rend());
    QStringList names;
    for (const KeptName &kept : found) {
        const QString path = place.sibling(kept.text);
        if (entryKind(path) == EntryKind::Directory && isDelivery(path))
            names.push_back(kept.text);
    }
    return names;
}

QString newKeptName(const Place &place)
{
    const QString second
        = QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    int number = 0;
    for (const KeptName &kept : keptNames(place)) {
        if (kept.second == second)
            number = std::max(number, kept.number);
    }
    const QString name = place.name + QLatin1Char('.') + second;
    return number == 0 ? name : name + QStringLiteral("-%1").arg(number + 1);
}

} // namespace seamrevise
