#include "model/alert.h"

#include <QApplication>
#include <QMessageBox>

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
    auto* const box = new QMessageBox(icon, alert.title, alert.text, QMessageBox::Ok,
                                      QApplication::activeWindow());
    box->setTextFormat(Qt::PlainText);       // texts hold file names and what servers say
    box->setAttribute(Qt::WA_DeleteOnClose); // its parent may go first
    box->exec();
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
