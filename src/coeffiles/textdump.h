#pragma once

#include <QString>

#include <vector>

/// The plain-text dumps of coefficients for inspection, in LocalConfig's export directory.
///
/// A dump is the header and then lines of decimal values, each followed by the separator; every
/// line, the header's too, ends in CR LF. While export is off nothing happens and the result is
/// empty; otherwise it is the path of the dump. A file that cannot be opened is passed over.
/// Header and separator are written in the locale's encoding.

/// Lines of valuesPerLine values, the last one may be shorter; none if valuesPerLine is below 1.
QString outData(const std::vector<unsigned short> &data, const QString &fileName,
                const QString &separator, int valuesPerLine, QString header);

QString outData(const std::vector<unsigned char> &data, const QString &fileName,
                const QString &separator, int valuesPerLine, QString header);

/// One line per row.
QString outData(const std::vector<std::vector<int>> &data, const QString &fileName,
                const QString &separator, QString header);

namespace seamrevision
{

/// Runs code that takes dumps in a revision. Dumps never fail one: what the code throws, want of
/// memory first of all, is passed over.
template <typename TakeDumps>
void passOverFailures(TakeDumps takeDumps) noexcept
{
    try {
        takeDumps();
    } catch (...) { // the revision goes on without
    }
}

} // namespace seamrevision
