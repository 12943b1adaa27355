#pragma once

#include "acquire/datamanager.h"
#include "model/capturecore.h"

#include "requests.h"
#include "tests/support/tempfolder.h"

#include <QTest>

#include <memory>

/// A manager and the server that it speaks to, what it read and how its runs ended.
template <typename Manager>
struct ManagerRig
{
    void begin()
    {
        m_reads.clear();
        m_ends.clear();
        m_server.reset(new ScriptedServer);
        m_manager.reset(new Manager);
        m_manager->setTiming(0, 0);
        QObject::connect(m_manager.get(), &VEK::DataManager::triggerComplete,
                         [this](int result) { m_ends.append(result); });
    }

    void end()
    {
        m_manager.reset();
        m_server.reset();
    }

    /// Hands the cores to the manager the way a user does, through a file.
    template <typename Core>
    void loadWith(bool (*write)(QList<Core*> const&, QString const&), QList<Core*> const& cores)
    {
        TempFolder const folder;
        QString const path = folder.path("cores.vek");
        QString error;
        QVERIFY(write(cores, path) && m_manager->readVekFile(path, error));
    }

    /// Signals that a core captures.
    static QList<VEK::SignalItem> captured(int count)
    {
        VEK::SignalItem item;
        item.name = "s";
        item.captureEnable = true;
        return QVector<VEK::SignalItem>(count, item).toList();
    }

    std::unique_ptr<ScriptedServer> m_server;
    std::unique_ptr<Manager> m_manager;
    QList<QList<QBitArray>> m_reads;
    QList<int> m_ends;
};
