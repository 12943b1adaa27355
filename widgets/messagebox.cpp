#include "widgets/messagebox.h"

namespace VEK {

void showMessage(QMessageBox::Icon icon, QString const& title, QString const& text, QWidget* parent)
{
    auto* const box = new QMessageBox(icon, title, text, QMessageBox::Ok, parent);
    box->setTextFormat(Qt::PlainText);       // texts hold file names and what servers say
    box->setAttribute(Qt::WA_DeleteOnClose); // its parent may go first
    box->exec();
}

} // namespace VEK
