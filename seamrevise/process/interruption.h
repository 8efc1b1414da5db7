#pragma once

#include <QString>

/// What becomes of a run that is interrupted by Ctrl-C or asked to end: it ends at once, with 130
/// or 143, and what it has begun on the disk is removed. Only the main thread uses any of this.
namespace seamrevise
{

/// From now on SIGINT and SIGTERM do that, unless the process was started with them ignored.
void handleInterruptions();

/// A name that an interruption removes while this object lives.
class Unfinished
{
public:
    enum What
    {
        Files,         ///< a file, or a directory with the files in it
        EmptyDirectory ///< a directory, unless it holds something
    };
    Unfinished(const QString &path, What what);
    ~Unfinished();
    Unfinished(const Unfinished &) = delete;
    Unfinished &operator=(const Unfinished &) = delete;

private:
    int m_slot = -1;
};

/// While it lives, an interruption waits: between two steps that belong together.
class Uninterrupted
{
public:
    Uninterrupted();
    ~Uninterrupted();
    Uninterrupted(const Uninterrupted &) = delete;
    Uninterrupted &operator=(const Uninterrupted &) = delete;
};

} // namespace seamrevise
