#pragma once

#include <QWidget>

namespace VEK {

/// Keeps a view alive while the dialog that it asked for is open. Qt's item views go on working
/// after they told of a double click, also when the host has deleted the view's parent meanwhile;
/// the view then goes as soon as that event is over.
class ViewKeeper
{
public:
    /// `view` has a parent and a `ViewKeeper` lives on the stack.
    explicit ViewKeeper(QWidget* view)
        : m_view(view), m_parentGoes(QObject::connect(view->parent(), &QObject::destroyed, view,
                                                      [view] { view->setParent(nullptr); }))
    {}

    ~ViewKeeper()
    {
        QObject::disconnect(m_parentGoes);
        if (!m_view->parent())
            m_view->deleteLater();
    }

    Q_DISABLE_COPY(ViewKeeper)

private:
    QWidget* m_view;
    QMetaObject::Connection m_parentGoes;
};

} // namespace VEK
