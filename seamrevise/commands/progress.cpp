#include "commands/progress.h"

#include <seamrevision/funcrunningstate.h>

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
    , m_activities{{"loading", QLatin1String("::readCofficients"), loadCount, 0},
                   {"revising", QLatin1String("::partitionCoefRevise"), seamCount, 0},
                   {"saving", QLatin1String("::saveCombineAreaCoef"), saveCount, 0}}
{
    FuncRunningState::setObserver([this](const char *event, const QString &function) {
        if (event[0] == 'e')
            entered(function);
    });
}

EngineProgress::~EngineProgress()
{
    FuncRunningState::setObserver(nullptr);
    m_progress.clear();
}

void EngineProgress::entered(const QString &function)
{
    for (Activity &activity : m_activities) {
        if (function.endsWith(activity.function))
            m_progress.show(activity.text, ++activity.done, activity.total);
    }
}

} // namespace seamrevise
