#pragma once

#include "delivery/manifest.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace seamrevise
{

class SqlScreenStore;

/// What is not as a manifest says, or not as another set has it.
struct Difference
{
    QString kind;      ///< for programs: "missing", "size", "content", ...
    QString file;      ///< its name in the set; empty if it is none
    int partition = 0; ///< its number; 0 if it is none
    QString message;   ///< for people, complete
};

/// Holds a directory against its own manifest: every file is there, has its size and content and
/// can be decrypted to what its rectangle needs, and there is nothing besides.
std::vector<Difference> verifyFiles(const QString &directory);

/// Holds a database against a manifest: it has the same partitions, and the same coefficients are
/// stored for them. `fault` is set where the database cannot be read.
std::vector<Difference> verifyStored(const Manifest &manifest, SqlScreenStore &store,
                                     QString &fault);

/// A number of numbers.json and the limit that was agreed for it.
struct LimitVerdict
{
    QString name; ///< as in the file of limits
    double limit = 0.0;
    std::optional<double> value; ///< of the wall; none where there is nothing to measure
    bool holds() const { return !value || *value <= limit; }
};

/// Holds a delivery's numbers.json against a file of limits. Empty, or what is wrong with the
/// limits.
QString checkLimits(const QByteArray &limits, const QByteArray &numbers,
                    std::vector<LimitVerdict> &verdicts);

} // namespace seamrevise
