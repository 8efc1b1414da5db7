#pragma once

#include "exchange/blockfile.h"

#include <QByteArray>

#include <vector>

/// NumPy's array files, format 1.0, of arrays in C order of two dimensions or more.
namespace seamrevise
{

/// The bytes of such a file. descr is "<u2" or the like, and values are the bytes after the header.
BlockSource npyBytes(const QByteArray &descr, const std::vector<qint64> &shape,
                     const BlockSource &values);
/// Writes and compares it. Empty, or what went wrong with the file's name.
QString writeNpy(const QString &path, const QByteArray &descr, const std::vector<qint64> &shape,
                 const BlockSource &values);

} // namespace seamrevise
