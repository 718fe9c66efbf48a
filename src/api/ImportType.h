#pragma once

#include <QtCore/QMetaType>

namespace Korvo::Web {

/// Which kind of project an upload carries; the web server is told when the upload ends.
enum class ImportType : int {
    Standard = 0, ///< a project of its own, uploadProject()
    QZImport = 1, ///< a project of the import tool, uploadQZProject()
    Quickview = 2 ///< a Quickview project, uploadQuickviewProject()
};

} // namespace Korvo::Web

Q_DECLARE_METATYPE(Korvo::Web::ImportType)
