#include "wavemonitor/notificationcenter.h"

#include <QtTest>

#include <functional>

namespace WaveMonitor {

class Observer : public QObject
{
    Q_OBJECT

public:
    Observer(QString const& name, QStringList& heard) : m_name(name), m_heard(heard) {}

    Q_INVOKABLE QString handleEvents(Notification* note)
    {
        m_heard.append(QStringLiteral("%1 %2%3").arg(m_name).arg(note->type).arg(note->text));
        if (onEvent)
            onEvent();
        return m_name;
    }

    std::function<void()> onEvent;

private:
    QString m_name;
    QStringList& m_heard;
};

} // namespace WaveMonitor

using namespace WaveMonitor;

namespace {

QStringList messages;

} // namespace

class tst_NotificationCenter : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        heard.clear();
        a = std::make_unique<Observer>("a", heard);
        b = std::make_unique<Observer>("b", heard);
        c = std::make_unique<Observer>("c", heard);
        hub->registerObserver(a.get(), LayoutChanged);
        hub->registerObserver(b.get(), QList<NotificationType>{SelectionChanged, LayoutChanged});
        hub->registerObserver(c.get(), LayoutChanged);
    }

    void entriesAndOrder()
    {
        send(LayoutChanged, nullptr);
        QCOMPARE(takeHeard(), "c 20,b 20,a 20");
        hub->registerObserver(a.get(), LayoutChanged);
        send(LayoutChanged, b.get());
        QCOMPARE(takeHeard(), "a 20,c 20,a 20");
        send(SelectionChanged, b.get());
        send(RowExpanded, a.get());
        QCOMPARE(takeHeard(), "");
        hub->unregisterObserver(a.get(), LayoutChanged);
        hub->unregisterObserver(b.get(), QList<NotificationType>{LayoutChanged, ZoomChanged});
        send(LayoutChanged, nullptr);
        send(SelectionChanged, nullptr);
        QCOMPARE(takeHeard(), "c 20,b 18");
        hub->unregisterObserver(c.get());
        send(LayoutChanged, nullptr);
        QCOMPARE(takeHeard(), "");
    }

    void postedLater()
    {
        auto* note = new Notification(LayoutChanged, a.get());
        note->text = "!";
        hub->postEvent(new Notification(note), a.get());
        hub->postEvent(note, nullptr);
        hub->unregisterObserver(b.get()); // too late
        QCOMPARE(takeHeard(), "");
        QCoreApplication::processEvents();
        QCOMPARE(takeHeard(), "c 20!,b 20!,c 20!,b 20!,a 20!");

        // notes outlive a nested loop
        hub->registerObserver(b.get(), SelectionChanged);
        c->onEvent = [] { QCoreApplication::processEvents(); };
        post(LayoutChanged, nullptr);
        post(SelectionChanged, nullptr);
        QCoreApplication::processEvents();
        QCOMPARE(takeHeard(), "c 20,a 20,b 18");
    }

    void deletedObserversAndSenders()
    {
        post(LayoutChanged, nullptr);
        b.reset();
        QCoreApplication::processEvents();
        QCOMPARE(takeHeard(), "c 20,a 20");
        c->onEvent = [this] { a.reset(); };
        send(LayoutChanged, nullptr);
        QCOMPARE(takeHeard(), "c 20");

        auto sender = std::make_unique<QObject>();
        post(LayoutChanged, sender.get());
        sender.reset();
        QCoreApplication::processEvents();
        QCOMPARE(takeHeard(), "");
        sender = std::make_unique<QObject>();
        c->onEvent = [&sender] { sender.reset(); };
        send(LayoutChanged, sender.get());
        QCOMPARE(takeHeard(), "c 20");
    }

    void refusedSilently()
    {
        QObject deaf;
        hub->registerObserver(&deaf, LayoutChanged);
        hub->registerObserver(a.get(), Invalid);
        auto* const before =
            qInstallMessageHandler([](QtMsgType, QMessageLogContext const&, QString const& text) {
                messages.append(text);
            });
        send(LayoutChanged, nullptr);
        send(Invalid, nullptr);
        post(Invalid, nullptr);
        hub->deleteEventLater(nullptr);
        hub->deleteEventLater(new Notification(LayoutChanged, nullptr));
        QCoreApplication::processEvents();
        qInstallMessageHandler(before);
        QCOMPARE(takeHeard(), "c 20,b 20,a 20");
        QCOMPARE(messages, QStringList());
    }

private:
    void send(NotificationType type, QObject* sender)
    {
        hub->sendEvent(new Notification(type, sender), sender);
    }

    void post(NotificationType type, QObject* sender)
    {
        hub->postEvent(new Notification(type, sender), sender);
    }

    QString takeHeard()
    {
        QString const text = heard.join(",");
        heard.clear();
        return text;
    }

    NotificationCenter* hub = NotificationCenter::shared();
    QStringList heard;
    std::unique_ptr<Observer> a;
    std::unique_ptr<Observer> b;
    std::unique_ptr<Observer> c;
};

QTEST_MAIN(tst_NotificationCenter)
#include "tst_notificationcenter.moc"
