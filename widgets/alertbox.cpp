#include "model/alert.h"
#include "widgets/messagebox.h"

#include <QApplication>

/// Nothing refers to this file, and a static library gives only the files that something refers to:
/// whoever links the library asks for this symbol, see CMakeLists.txt.
extern "C" {
int vekAlertBox = 0;
}

namespace VEK {

static void showAlertBox(Alert const& alert)
{
    auto const icon =
        alert.kind == AlertKind::Critical ? QMessageBox::Critical : QMessageBox::Warning;
    showMessage(icon, alert.title, alert.text, QApplication::activeWindow());
}

static void installAlertBox()
{
    if (!qobject_cast<QApplication*>(QCoreApplication::instance()))
        return;
    setAlertHandler(showAlertBox);
    qAddPostRoutine([] { setAlertHandler({}); });
}

Q_COREAPP_STARTUP_FUNCTION(installAlertBox)

} // namespace VEK
