#pragma once

#include <ostream>

namespace seamrevise
{

/// Decides, while it lives, what becomes of the log lines of the library and of Qt: written to a
/// stream, or dropped. Restores what was there before. One at a time.
class LogLines
{
public:
    /// Writes to stream; drops the lines if it is null.
    explicit LogLines(std::ostream *stream);
    ~LogLines();
    LogLines(const LogLines &) = delete;
    LogLines &operator=(const LogLines &) = delete;
};

} // namespace seamrevise
