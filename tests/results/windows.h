#pragma once

#include "tests/support/tempfolder.h"

#include <QDomDocument>
#include <QString>
#include <QStringList>
#include <QTest>

#include <random>

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
inline QString nodeXml(QString const& id)
{
    return QStringLiteral("<Node type='sig' id='%1'/>").arg(id);
}

/// A `Node` element of a bus.
inline QString busXml(QString const& name, QString const& format, QString const& members)
{
    return QStringLiteral("<Node type='bus' name='%1' format='%2'>%3</Node>")
        .arg(name, format, members);
}

inline QString windowXml(QString const& signalElements, QString const& nodes)
{
    return QStringLiteral("<Signals>%1</Signals><Layout>%2</Layout>").arg(signalElements, nodes);
}

/// That many characters "0" and "1".
inline QString randomSamples(std::mt19937& random, int count)
{
    QString text(count, QLatin1Char('0'));
    for (QChar& sample : text)
        sample = QLatin1Char(random() % 2 ? '1' : '0');
    return text;
}

/// What an export, called with a path, leaves in a file that held something longer before.
template <typename Export>
QString exported(Export write)
{
    TempFolder const folder;
    QString const path = folder.write("out", QByteArray(1000000, '\0'));
    return write(path) ? QString::fromUtf8(TempFolder::content(path)) : "not written";
}

/// Rows of a test that compares two texts: `row` adds one, and `compareTexts` is the test itself.
inline void addTextColumns()
{
    QTest::addColumn<QString>("actual");
    QTest::addColumn<QString>("expected");
}

inline void row(char const* name, QString const& actual, QString const& expected)
{
    QTest::newRow(name) << actual << expected;
}

inline void compareTexts()
{
    QFETCH(QString, actual);
    QTEST(actual, "expected");
}
