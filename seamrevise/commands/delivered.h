#pragma once

#include "commands/commonoptions.h"
#include "commands/exitcode.h"
#include "delivery/deliveredset.h"

#include <QStringList>

#include <ostream>

/// What the commands share that read or restore deliveries.
namespace seamrevise
{

/// What was done about an interrupted run, a line each.
void reportNotes(const CommonOptions &options, const QStringList &notes, std::ostream &err);

/// Opens a delivery and reports what was cleared up there, and why it could not be opened. Returns
/// an ExitCode; that of a damaged manifest is Exit_Different.
int openDelivered(const QString &directory, const CommonOptions &options, DeliveredSet &set,
                  std::ostream &err);

} // namespace seamrevise
