#pragma once

#include "store/screenlayout.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <map>
#include <optional>
#include <vector>

/// Layout files: a wall and the files of its coefficients, in JSON; docs/import.md describes them.
namespace seamrevise
{

/// A file of coefficients.
struct LayoutSource
{
    QString file;                  ///< as the layout names it
    NQRect zone;                   ///< what the file covers
    std::optional<int> layerCount; ///< 0: single layer; none: what the file has
    QString place;                 ///< in the layout: "partitions[3].source"
};

struct ImportLayout
{
    ScreenLayout layout;
    std::map<int, std::vector<LayoutSource>> sources; ///< of the corrected partitions
};

/// What keeps a rectangle from being the zone of a partition of the layout: it must hold the
/// partition and lie on the screen. Empty if nothing.
QString zoneFault(const ScreenLayout &layout, int number, const NQRect &zone);

/// Reads the text of a layout file. Returns what is wrong, all of it, each with its line or its
/// place in the document; the layout then holds what is right in itself. Whether the partitions fit
/// together is not judged.
QStringList readLayout(const QByteArray &text, ImportLayout &layout);

/// The text of a layout file.
QByteArray layoutText(const ImportLayout &layout);

} // namespace seamrevise
