#pragma once

#include <QDomDocument>
#include <QString>

/// The `Window` element with these children, and the document that keeps it.
struct Window
{
    explicit Window(QString const& children)
    {
        document.setContent(QStringLiteral("<Window>%1</Window>").arg(children));
        element = document.documentElement();
    }

    QDomDocument document;
    QDomElement element;
};

/// A `Signal` element.
inline QString signalXml(QString const& id, QString const& name, QString const& text,
                         QString const& samples)
{
    return QStringLiteral("<Signal id='%1' name='%2' text='%3'>%4</Signal>")
        .arg(id, name, text, samples);
}

/// A `Node` element of a signal.
inline QString nodeXml(QString const& id, QString const& text = QString())
{
    return QStringLiteral("<Node type='sig' id='%1' text='%2'/>").arg(id, text);
}

/// A `Node` element of a bus.
inline QString busXml(QString const& name, QString const& text, QString const& format,
                      QString const& members)
{
    return QStringLiteral("<Node type='bus' name='%1' text='%2' format='%3'>%4</Node>")
        .arg(name, text, format, members);
}

inline QString windowXml(QString const& signalElements, QString const& nodes)
{
    return QStringLiteral("<Signals>%1</Signals><Layout>%2</Layout>").arg(signalElements, nodes);
}
