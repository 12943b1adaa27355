#include "results/prnexport.h"

#include "windows.h"

#include <QtTest>

#include <limits>

using namespace VEK;

namespace {

/// The export of a mode or a selection.
template <typename Choice>
QString prn(QString const& children, Choice const& choice, unsigned step = 1)
{
    Window const window(children);
    return exported(
        [&](QString const& path) { return exportPRN(path, "us", step, window.element, choice); });
}

} // namespace

class TestPrnExport : public QObject
{
    Q_OBJECT

private slots:
    void texts_data();
    void texts() { compareTexts(); }
    void badPaths();
};

void TestPrnExport::texts_data()
{
    using Selection = QList<int>;
    QString const divider = "<Node type='divider' id='0' text='d'/>";
    QString const window =
        windowXml(signalXml("0", "top.a", "", "010") + signalXml("1", "top.b", "B", "001"),
                  busXml("n", "T", "", nodeXml("0", "m") + divider + nodeXml("1")) + divider +
                      nodeXml("1") + busXml("U", "", "binary", nodeXml("1") + nodeXml("0")));
    QString const plain = windowXml(signalXml("0", "a", "", "10"), nodeXml("0"));
    char const* const none = "time unit: us\t";
    char const* const first = "time unit: us\tT\n0\t0 \n1\t2 \n2\t1 \n";
    char const* const second = "time unit: us\tU\n0\t00 \n1\t01 \n2\t10 \n";

    addTextColumns();
    row("mode 0", prn(window, 0),
        "time unit: us\tT\t/m\t/B\t/B\tU\t/B\t/top.a\n0\t0\t0\t0\t0\t00\t0\t0 \n"
        "1\t2\t1\t0\t0\t01\t0\t1 \n2\t1\t0\t1\t1\t10\t1\t0 \n");
    row("mode 1, step 10", prn(window, 1, 10),
        "time unit: us\tT\t/B\tU\n0\t0\t0\t00 \n10\t2\t0\t01 \n20\t1\t1\t10 \n");
    row("plain signal, largest step", prn(plain, 1, std::numeric_limits<unsigned>::max()),
        "time unit: us\t/a\n0\t1 \n4294967295\t0 \n");
    row("mode 2", prn(window, 2), none);
    row("unequal lengths, other characters, UTF-8",
        prn(windowXml(signalXml("0", "a", "é水", "1é0") + signalXml("1", "b", "", "1"),
                      nodeXml("0") + nodeXml("1", "б")),
            0),
        "time unit: us\t/é水\t/б\n0\t1\t1 \n1\té\t \n2\t0\t \n");
    row("beyond the last", prn(window, Selection{1, 2, 9}), second);
    row("unsorted: what stands before the cursor is never met", prn(window, Selection{1, 0}),
        second);
    row("duplicate: the cursor stays on it", prn(window, Selection{0, 0, 1}), first);
    row("negative: the cursor stays on it", prn(window, Selection{-1, 0}), none);
}

void TestPrnExport::badPaths()
{
    Window const window("");
    for (QString const& path : BadPaths) {
        QVERIFY(!exportPRN(path, "us", 1, window.element, 0));
        QVERIFY(!exportPRN(path, "us", 1, window.element, QList<int>{0}));
    }
}

QTEST_GUILESS_MAIN(TestPrnExport)
#include "tst_prnexport.moc"
