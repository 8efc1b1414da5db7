#include "store/databaseaddress.h"

#include <QRegularExpression>
#include <QUrl>
#include <QUrlQuery>

#include <algorithm>

namespace seamrevise
{

namespace
{

/// What a URL may tell libpq beside its own parts. Anything else is refused, and not quoted: it
/// may be a password under a mistyped name.
const char *const knownParameters[]
    = {"sslmode", "sslrootcert", "sslcert", "sslkey", "sslcrl", "connect_timeout", "passfile"};

QString decoded(const QString &text)
{
    return QUrl::fromPercentEncoding(text.toUtf8());
}

QRegularExpressionMatch findScheme(const QString &text)
{
    static const QRegularExpression scheme(QStringLiteral("postgres(ql)?://"),
                                           QRegularExpression::CaseInsensitiveOption);
    return scheme.match(text);
}

bool isKnown(const QString &key)
{
    return std::any_of(std::begin(knownParameters), std::end(knownParameters),
                       [&](const char *known) { return key == QLatin1String(known); });
}

QString readPort(const QString &text, DatabaseAddress &address)
{
    bool isNumber = false;
    address.port = text.toInt(&isNumber);
    return isNumber && address.port > 0 && address.port < 65536
        ? QString()
        : QStringLiteral("the port in the URL is not a number from 1 to 65535");
}

/// [USER@][HOST][:PORT]; an IPv6 address stands in brackets.
QString readAuthority(const QString &text, DatabaseAddress &address)
{
    static const QRegularExpression form(
        QStringLiteral(R"(^(?:([^@:]*)@)?(?:\[([^\]]*)\]|([^:\[\]@]*))(?::([^:@]*))?$)"));
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch())
        return QStringLiteral("the URL is not postgresql://USER@HOST:PORT/DATABASE/WALL");
    address.user = decoded(match.captured(1));
    address.host = decoded(match.captured(2) + match.captured(3));
    return match.captured(4).isEmpty() ? QString() : readPort(match.captured(4), address);
}

QString readPath(const QString &text, DatabaseAddress &address)
{
    const QStringList parts = text.split(QLatin1Char('/'));
    if (parts.size() != 2 || parts[0].isEmpty() || parts[1].isEmpty())
        return QStringLiteral("the URL names no DATABASE/WALL after its host");
    address.database = decoded(parts[0]);
    address.wall = decoded(parts[1]);
    // A wall is a schema of its own; these names are the server's.
    if (address.wall.toUtf8().size() > 63 || address.wall.contains(QChar::Null)
        || address.wall.startsWith(QLatin1String("pg_"))
        || address.wall == QLatin1String("information_schema"))
        return QStringLiteral("a wall cannot have the name that the URL gives it");
    return {};
}

QString readQuery(const QString &text, DatabaseAddress &address)
{
    const QUrlQuery query(text);
    for (const auto &item : query.queryItems(QUrl::FullyDecoded)) {
        if (item.first == QLatin1String("host")) {
            address.host = item.second;
        } else if (item.first == QLatin1String("port")) {
            const QString fault = readPort(item.second, address);
            if (!fault.isEmpty())
                return fault;
        } else if (isKnown(item.first) && !item.second.contains(QLatin1Char(';'))) {
            address.parameters.emplace_back(item.first, item.second);
        } else {
            return QStringLiteral("the URL has a parameter that is not known here");
        }
    }
    return {};
}

} // namespace

bool isUrl(const QString &address)
{
    return findScheme(address).capturedStart() == 0;
}

bool carriesPassword(const QString &word)
{
    const QRegularExpressionMatch scheme = findScheme(word);
    if (!scheme.hasMatch())
        return false;
    const QString rest = word.mid(scheme.capturedEnd());
    // An unquoted password may hold anything, a slash or a question mark too.
    if (rest.left(rest.lastIndexOf(QLatin1Char('@')) + 1).contains(QLatin1Char(':')))
        return true;
    const QUrlQuery query(rest.section(QLatin1Char('?'), 1));
    const auto items = query.queryItems(QUrl::FullyDecoded);
    return std::any_of(items.begin(), items.end(), [](const auto &item) {
        return item.first.contains(QLatin1String("password"), Qt::CaseInsensitive);
    });
}

DatabaseAddress parseAddress(const QString &text, QString &fault)
{
    DatabaseAddress address;
    address.text = text;
    fault.clear();
    address.isUrl = isUrl(text);
    if (!address.isUrl)
        return address;
    if (carriesPassword(text)) {
        address.text = QStringLiteral("the database");
        fault = QStringLiteral(
            "its URL carries a password; passwords come from PGPASSFILE or PGPASSWORD");
        return address;
    }
    const QString rest = text.mid(findScheme(text).capturedEnd());
    const QString place = rest.section(QLatin1Char('?'), 0, 0);
    fault = readAuthority(place.section(QLatin1Char('/'), 0, 0), address);
    if (fault.isEmpty())
        fault = readPath(place.section(QLatin1Char('/'), 1), address);
    if (fault.isEmpty())
        fault = readQuery(rest.section(QLatin1Char('?'), 1), address);
    return address;
}

} // namespace seamrevise
