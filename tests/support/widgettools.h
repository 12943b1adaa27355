#pragma once

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QImage>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QWheelEvent>

/// What a user reads off widgets and does to them.
namespace widgettools {

/// Whether there is a font: without any on the machine texts leave no pixel.
inline bool textIsSeen(QFont const& font = QFont())
{
    QImage blank(40, 40, QImage::Format_RGB32);
    blank.fill(Qt::white);
    QImage written = blank;
    QPainter painter(&written);
    painter.setFont(font);
    painter.drawText(written.rect(), Qt::AlignCenter, QStringLiteral("8"));
    return written != blank;
}

inline QStringList items(QComboBox const* box)
{
    QStringList texts;
    for (int i = 0; box && i < box->count(); ++i)
        texts << box->itemText(i);
    return texts;
}

/// The button with that caption, or nullptr.
inline QAbstractButton* button(QWidget const& widget, QString const& caption)
{
    for (auto* const candidate : widget.findChildren<QAbstractButton*>())
        if (candidate->text() == caption)
            return candidate;
    return nullptr;
}

/// Clicks on the indicator of check boxes and radio buttons too, which lies at their left.
inline void press(QWidget const& widget, QStringList const& captions)
{
    for (QString const& caption : captions) {
        QAbstractButton* const found = button(widget, caption);
        QVERIFY2(found, qPrintable(caption));
        QTest::mouseClick(found, Qt::LeftButton, {}, QPoint(8, found->height() / 2));
    }
}

inline void doubleClick(QAbstractItemView* view, QModelIndex const& index)
{
    view->scrollTo(index);
    QPoint const at = view->visualRect(index).center();
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, at);
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, at);
}

/// Presses and moves in one step; the button stays down.
inline void drag(QWidget* viewport, Qt::MouseButton button, QPoint const& from, QPoint const& to)
{
    QTest::mousePress(viewport, button, {}, from);
    QMouseEvent move(QEvent::MouseMove, to, Qt::NoButton, button, {});
    QApplication::sendEvent(viewport, &move);
}

inline void wheel(QWidget* viewport, QPoint const& angle, Qt::KeyboardModifiers modifiers = {})
{
    QWheelEvent event(QPointF(100, 20), viewport->mapToGlobal(QPoint(100, 20)), {}, angle,
                      Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
    QApplication::sendEvent(viewport, &event);
}

/// Asks for a context menu as a right click does.
inline void rightClick(QWidget* viewport, QPoint const& at)
{
    QContextMenuEvent event(QContextMenuEvent::Mouse, at, viewport->mapToGlobal(at));
    QApplication::sendEvent(viewport, &event);
}

/// Runs once, when the next modal dialog of that class is open.
template <typename Dialog = QWidget, typename Work>
void inDialog(Work work)
{
    auto* const timer = new QTimer(qApp);
    QObject::connect(timer, &QTimer::timeout, qApp, [timer, work] {
        if (auto* const dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget())) {
            timer->stop();
            timer->deleteLater();
            work(dialog);
        }
    });
    timer->start(1);
}

/// Notes title and text of the next message box and closes it.
inline void answerBox(QStringList& said)
{
    inDialog<QMessageBox>([&said](QMessageBox* box) {
        said << box->windowTitle() << box->text();
        QTest::keyClick(box, Qt::Key_Return);
    });
}

} // namespace widgettools
