#include "wavemonitor/waves/valuetexts.h"

#include <QCache>
#include <QCoreApplication>
#include <QFontMetricsF>
#include <QThread>
#include <QTransform>

namespace WaveMonitor {

namespace {

constexpr int LongestKept = 2;
constexpr int MostKept = 1024;

struct KeptTexts
{
    QFont font;
    QCache<QString, ValueText> texts{MostKept};
};

KeptTexts* keptTexts = nullptr; // goes with the application, whose fonts the texts hold

void forgetTexts()
{
    delete keptTexts;
    keptTexts = nullptr;
}

} // namespace

QSizeF valueTextExtent(QString const& text, QFont const& font)
{
    return QFontMetricsF(font).boundingRect(text).size();
}

ValueText const* keptValueText(QString const& text, QFont const& font)
{
    if (text.size() > LongestKept || QThread::currentThread() != qApp->thread())
        return nullptr;
    if (!keptTexts) {
        keptTexts = new KeptTexts;
        qAddPostRoutine(forgetTexts);
    }
    if (keptTexts->font != font) {
        keptTexts->texts.clear();
        keptTexts->font = font;
    }
    ValueText* kept = keptTexts->texts.object(text);
    if (!kept) {
        kept = new ValueText{QStaticText(text), valueTextExtent(text, font)};
        kept->text.setTextFormat(Qt::PlainText);
        kept->text.prepare(QTransform(), font);
        keptTexts->texts.insert(text, kept);
    }
    return kept;
}

} // namespace WaveMonitor
