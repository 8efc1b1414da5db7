#include "seamrevision/errinfo.h"

QByteArray generateErrInfo(const QString &function, const int &line, const QString &message)
{
    return (function + QLatin1Char('(') + QString::number(line) + QLatin1String("): ") + message)
        .toUtf8();
}
