#pragma once

#include "seamrevision/export.h"

#include <QString>

/// The process-wide switches of the diagnostic text dumps. The engines read them afresh at every
/// use; set them while no engine runs.
///
/// Two dumps have Chinese file names: a host that may run in the plain C locale calls
/// QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8")) first, or their names are lost.
class SEAMREVISION_EXPORT LocalConfig
{
public:
    static LocalConfig &getInstance();

    /// Whether dumps are written; off by default.
    bool isExportData() const { return m_exportData; }
    void setExportData(bool exportData) { m_exportData = exportData; }

    /// The directory of the dumps. It must exist: it is never created, and without it nothing is
    /// written.
    QString exportDataDir() const { return m_exportDataDir; }
    void setExportDataDir(const QString &directory) { m_exportDataDir = directory; }

private:
    LocalConfig() = default;

    bool m_exportData = false;
    QString m_exportDataDir;
};
