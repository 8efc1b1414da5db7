#pragma once

#include "engines/enginerun.h"

#include <map>
#include <ostream>
#include <string>

namespace seamrevise
{

/// One line on a terminal that says how far a command is, and that is gone when it is done.
class Progress
{
public:
    /// Shows nothing if stream is null.
    explicit Progress(std::ostream *stream)
        : m_stream(stream)
    {
    }
    ~Progress() { clear(); }
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    /// "loading 5 of 24".
    void show(const char *activity, int done, int total);
    void clear();

private:
    void replaceLine(const std::string &text);

    std::ostream *m_stream;
    std::size_t m_shownLength = 0;
};

/// Shows how far an engine is, until it goes.
class EngineProgress
{
public:
    EngineProgress(Progress &progress, int loadCount, int seamCount, int saveCount);
    ~EngineProgress();
    EngineProgress(const EngineProgress &) = delete;
    EngineProgress &operator=(const EngineProgress &) = delete;

    void begin(EngineStep step);

private:
    struct Activity
    {
        const char *text;
        int total;
        int done;
    };
    Progress &m_progress;
    std::map<EngineStep, Activity> m_activities;
};

} // namespace seamrevise
