#include "commands/progress.h"

namespace seamrevise
{

void Progress::show(const char *activity, int done, int total)
{
    if (!m_stream)
        return;
    const std::string text
        = std::string(activity) + ' ' + std::to_string(done) + " of " + std::to_string(total);
    replaceLine(text);
}

void Progress::clear()
{
    if (m_shownLength != 0)
        replaceLine({});
}

/// With blanks and no escape sequence, which not every terminal and nobody with NO_COLOR wants.
void Progress::replaceLine(const std::string &text)
{
    *m_stream << '\r' << std::string(m_shownLength, ' ') << '\r' << text << std::flush;
    m_shownLength = text.size();
}

EngineProgress::EngineProgress(Progress &progress, int loadCount, int seamCount, int saveCount)
    : m_progress(progress)
    , m_activities{{EngineStep::Load, {"loading", loadCount, 0}},
                   {EngineStep::Revise, {"revising", seamCount, 0}},
                   {EngineStep::Save, {"saving", saveCount, 0}}}
{
}

EngineProgress::~EngineProgress()
{
    m_progress.clear();
}

void EngineProgress::begin(EngineStep step)
{
    Activity &activity = m_activities.at(step);
    m_progress.show(activity.text, ++activity.done, activity.total);
}

} // namespace seamrevise
