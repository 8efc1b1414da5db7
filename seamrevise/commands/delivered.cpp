#include "commands/delivered.h"

namespace seamrevise
{

void reportNotes(const CommonOptions &options, const QStringList &notes, std::ostream &err)
{
    if (options.quiet)
        return;
    for (const QString &note : notes)
        err << "seamrevise: " << note.toStdString() << '\n';
}

int openDelivered(const QString &directory, const CommonOptions &options, DeliveredSet &set,
                  std::ostream &err)
{
    const DeliveredSet::State state = set.open(directory);
    reportNotes(options, set.notes(), err);
    switch (state) {
    case DeliveredSet::State::Ready:
        return Exit_Done;
    case DeliveredSet::State::Missing:
        return reportFault(Exit_Input, set.message(), err);
    case DeliveredSet::State::Damaged:
        return reportFault(Exit_Different, set.message(), err);
    case DeliveredSet::State::Busy:
        break;
    }
    return reportFault(Exit_Output, set.message(), err);
}

} // namespace seamrevise
