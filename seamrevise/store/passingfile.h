#pragma once

#include <QString>

namespace seamrevise
{

/// A file under a passing name beside its final one: renamed when it is whole, else removed.
/// A process that is killed leaves it behind; the next one for the same final name clears it away.
class PassingFile
{
public:
    explicit PassingFile(const QString &finalPath);
    ~PassingFile() { remove(); }
    PassingFile(const PassingFile &) = delete;
    PassingFile &operator=(const PassingFile &) = delete;

    const QString &path() const { return m_path; }

    /// Replaces the file of the final name, if there is one and that is wanted. Empty, or what
    /// went wrong.
    QString moveToFinalName(bool mayReplace) const;

private:
    void removeStale() const;
    void remove() const;

    const QString m_finalPath;
    const QString m_path;
};

} // namespace seamrevise
