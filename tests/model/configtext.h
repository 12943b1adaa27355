#pragma once

#include "model/capturecore.h"
#include "tests/support/tempfolder.h"

/// `+name(text)[members]`, with - for what is not captured.
inline QString show(QList<VEK::SignalItem> const& items)
{
    QStringList shown;
    for (VEK::SignalItem const& item : items) {
        QString const text = item.text.isEmpty() ? "" : "(" + item.text + ")";
        QString const members = item.isBus() ? "[" + show(item.signalList) + "]" : "";
        shown.append((item.captureEnable ? "+" : "-") + item.name + text + members);
    }
    return shown.join(' ');
}

inline QString show(QList<int> const& numbers)
{
    QStringList shown;
    for (int number : numbers)
        shown.append(QString::number(number));
    return shown.join(' ');
}

/// The list that both kinds of documents begin with.
inline QString const SignalListText = R"(        <SignalList>
            <Signal capture_enable="true" text="Enable &amp; go">u/en</Signal>
            <Bus capture_enable="false" name="Data" restorename="u/d[1:0]">
                <Signal text="high">u/d[1]</Signal>
                <Signal>u/d[0]</Signal>
            </Bus>
            <Bus capture_enable="true" restorename="u/&lt;a&gt;">
                <Signal>u/a</Signal>
            </Bus>
        </SignalList>
)";
inline QString const SignalListShown =
    "+u/en(Enable & go) +u/<a>[+u/a]\n"
    "+u/en(Enable & go) -u/d[1:0](Data)[-u/d[1](high) -u/d[0]] +u/<a>[+u/a]";

/// A configuration file in a folder of its own.
class ConfigFile : TempFolder
{
public:
    QString folder() const { return TempFolder::path(); }
    QString path() const { return TempFolder::path("config.vek"); }
    QString write(QByteArray const& text) const { return TempFolder::write("config.vek", text); }
    QByteArray content() const { return TempFolder::content(path()); }
};
