#pragma once

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QImage>
#include <QMenu>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QTest>
#include <QWheelEvent>

#include <functional>

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

/// As on a screen with that many pixels for one of the widget's.
inline QImage picture(QWidget* widget, double pixelRatio = 1)
{
    QImage image(widget->size() * pixelRatio, QImage::Format_RGB32);
    image.setDevicePixelRatio(pixelRatio);
    widget->render(&image);
    return image;
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

/// Hands the dialogs and the menus that open to whoever waits for them.
class Openings : public QObject
{
public:
    static Openings* shared()
    {
        static auto* const openings = new Openings;
        return openings;
    }

    bool eventFilter(QObject* object, QEvent* event) override
    {
        auto* const window = qobject_cast<QWidget*>(object);
        if (event->type() == QEvent::Show && window &&
            (window->isModal() || qobject_cast<QMenu*>(window)))
            QMetaObject::invokeMethod(
                window,
                [this, window] {
                    if (auto const next = waiting.value(0))
                        next(window);
                },
                Qt::QueuedConnection);
        return false;
    }

    QList<std::function<void(QWidget*)>> waiting;

private:
    Openings() : QObject(qApp) { qApp->installEventFilter(this); }
};

/// Works once in the next modal dialog, or the next menu, of that class, behind those that wait
/// already.
template <typename Dialog = QDialog, typename Work>
void inDialog(Work work)
{
    Openings::shared()->waiting.append([work](QWidget* window) {
        if (auto* const dialog = qobject_cast<Dialog*>(window)) {
            Openings::shared()->waiting.removeFirst();
            work(dialog);
        }
    });
}

/// The entry of a menu or a menu bar, or nullptr.
inline QAction* entry(QWidget const* menu, QString const& text)
{
    for (QAction* const action : menu ? menu->actions() : QList<QAction*>())
        if (action->text() == text)
            return action;
    return nullptr;
}

/// Takes entries of an open menu and of those below it. Where one is missing or disabled, the menus
/// close.
inline bool pick(QMenu* menu, QStringList const& path)
{
    for (QString const& text : path) {
        QAction* const found = entry(menu, text);
        if (!found || !found->isEnabled()) {
            while (QWidget* const popup = QApplication::activePopupWidget())
                popup->close();
            return false;
        }
        menu->setActiveAction(found);
        QTest::keyClick(menu, Qt::Key_Return);
        menu = found->menu();
    }
    return true;
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
