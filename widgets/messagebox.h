#pragma once

#include <QMessageBox>

namespace VEK {

/// Shows a message with an OK button and waits for it. The parent may be deleted meanwhile, and
/// with it whoever called: look before you go on.
void showMessage(QMessageBox::Icon icon, QString const& title, QString const& text,
                 QWidget* parent);

} // namespace VEK
