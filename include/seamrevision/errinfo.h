#pragma once

#include "seamrevision/export.h"

#include <QByteArray>
#include <QString>

/// The text of a traced log line, UTF-8: "function(line): message". The line is a fixed number of
/// the place that reports, not a line of the source file.
SEAMREVISION_EXPORT QByteArray generateErrInfo(const QString &function, const int &line,
                                               const QString &message);
