#include "widgets/waitingtip.h"

#include <QKeyEvent>
#include <QProgressBar>
#include <QVBoxLayout>

namespace {

constexpr int BarHeight = 15;
constexpr int TipWidth = 200;

} // namespace

QPointer<WaitingTip> WaitingTip::m_instance;

WaitingTip::WaitingTip(QWidget* parent) : QDialog(parent, Qt::SplashScreen)
{
    auto* const bar = new QProgressBar(this);
    bar->setRange(0, 0); // busy
    bar->setTextVisible(false);
    bar->setMaximumHeight(BarHeight);
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(bar);
}

void WaitingTip::showWaiting(QWidget* parent)
{
    if (m_instance)
        return;
    m_instance = new WaitingTip(parent);
    m_instance->show();
}

void WaitingTip::hideWaiting()
{
    if (!m_instance)
        return;
    WaitingTip* const tip = m_instance;
    m_instance.clear();
    tip->close();
    tip->deleteLater(); // its own key event may be on the stack
}

QSize WaitingTip::sizeHint() const
{
    return QSize(TipWidth, 0);
}

void WaitingTip::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_F3)
        Q_EMIT KeyPress(QStringLiteral("F3"));
    else if (event->key() == Qt::Key_F4)
        Q_EMIT KeyPress(QStringLiteral("F4"));
    else
        QDialog::keyPressEvent(event);
}
