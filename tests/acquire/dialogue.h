#pragma once

#include "acquire/litedatamanager.h"
#include "acquire/standarddatamanager.h"
#include "image/expressionimage.h"
#include "model/litefile.h"
#include "model/standardfile.h"
#include "tests/support/scriptedserver.h"
#include "tests/support/tempfolder.h"

#include <QRegularExpression>
#include <QTest>

#include <memory>

/// A number in base 2.
inline QString number(int value, int width)
{
    return QStringLiteral("%1").arg(value, width, 2, QLatin1Char('0'));
}

/// A chip that answers in order when it is told to. Each core fires at the poll of its number, and
/// has its initial data there once. The records of a section end with its number.
struct Chip : ScriptedServer
{
    Chip()
    {
        onRequest = [this](CmdPack const& pack) {
            QString const word = VEK::bit2str(pack.value("DATA").toBitArray());
            if (word.size() == 5)
                core = word.midRef(1).toInt(nullptr, 2);
            if (pack.contains("data_request_id"))
                owed.append(pack);
        };
    }

    void answer()
    {
        QString const operation = owed.first().value("OPRATE").toString();
        if (operation == "READ_RAM")
            answerSection(owed.takeFirst());
        else
            answerPoll(operation == "OP_READ_CAPTURE_INIT"
                           ? flags++ > 0
                           : ++polls[core] >= firesAt.value(core, 1));
    }

    void answerAll()
    {
        while (!owed.isEmpty())
            answer();
    }

    void answerPoll(bool isThere)
    {
        CmdPack const request = owed.takeFirst();
        replyData(request, number(!isThere, request.value("SIZE").toInt()));
    }

    void answerSection(CmdPack request)
    {
        int const size = request.value("SIZE").toInt();
        request.insert(
            "DATA",
            VEK::str2bit((number(sections++ % 64, 6) + "1").rightJustified(size, '1').right(size)));
        reply(request, request);
    }

    QList<CmdPack> owed;
    QMap<int, int> firesAt, polls;
    int core = 0, flags = 0, sections = 0;
};

/// Gives the core some signals, all captured.
template <typename Core>
Core* captured(Core* core, int count, int amount)
{
    VEK::SignalItem item;
    item.name = "s";
    item.captureEnable = true;
    core->allSignalList = QVector<VEK::SignalItem>(count, item).toList();
    core->captureAmount = amount;
    return core;
}

/// Both managers before one chip: what they ask it for, and what they tell.
class Dialogue : public QObject
{
protected:
    void begin()
    {
        m_chip.reset(new Chip);
        m_manager.reset(new VEK::VekStandardDataManager);
        m_lite.reset(new VEK::VekLiteDataManager);
        m_news.clear();
        m_reads.clear();
        listen(m_manager.get());
        listen(m_lite.get());
        connect(m_manager.get(), &VEK::VekStandardDataManager::readRamComplete, this,
                [this](int core, int window) {
                    m_news << QString("read %1.%2").arg(core).arg(window);
                    note(m_manager->getCurrentData(window));
                });
        connect(m_lite.get(), &VEK::VekLiteDataManager::readRamComplete, this,
                [this] { note(m_lite->getCurrentData()); });
    }

    void end()
    {
        m_lite.reset();
        m_manager.reset();
        m_chip.reset();
    }

    /// Hands the cores to the managers the way a user does, through files.
    void load(QList<VEK::SxCore*> const& cores)
    {
        QString const path = m_folder.path("cores.vek");
        QString error;
        QVERIFY(VEK::writeVEKConfigToXml(cores, path) && m_manager->readVekFile(path, error));
    }
    void load(VEK::SXCore_Lite* core)
    {
        QString const path = m_folder.path("lite.vek");
        QString error;
        QVERIFY(VEK::writeVEKConfigToXml_Lite({core}, path) && m_lite->readVekFile(path, error));
    }

    /// The requests that these words, with a comma between, stand for:
    /// - "core 1" selects a core, "start 3" writes its start register, "poll" asks for it;
    /// - "init" asks for the flag of the initial data, "close" for the end;
    /// - "image 1" is all that a core is set up with, "registers 1" the same without its tables;
    /// - "read 2:0/1@512*128" is section 0 of 1 in window 2, 128 records from address 512 on.
    QStringList asked(QString const& words) const
    {
        QStringList lines;
        for (QString const& word : words.split(", ", Qt::SkipEmptyParts)) {
            QString const verb = word.section(' ', 0, 0), rest = word.section(' ', 1);
            auto const write = [&lines](QString const& bits, QString const& operation) {
                lines += "CMD='WRITE' DATA=" + bits + " OPRATE='" + operation + "'";
            };
            auto const read = [&lines, this](QString const& operation) {
                lines += QString("CMD='READ' OPRATE='%1' SIZE=%2").arg(operation).arg(m_width);
            };
            if (verb == "core") {
                write("1" + number(rest.toInt(), 4), "WRITE_REGISTOR");
            } else if (verb == "start") {
                write("010010000000000000000" + number(rest.toInt(), m_width), "WRITE_START_REG");
            } else if (verb == "poll") {
                write("011010000000000000000", "WRITE_START_REG");
                read("READ_START_REG");
            } else if (verb == "init") {
                write(m_isLite ? "011010000000000000010" : "011010000000000000011",
                      "OP_SELECT_CAPTURE_INIT");
                read("OP_READ_CAPTURE_INIT");
            } else if (verb == "image" || verb == "registers") {
                VEK::SxCore const* const core = m_manager->getCore(rest.toInt());
                auto image = generateRegisterBit(core, m_device, VEK::FileKindVek);
                if (verb == "image")
                    image += generateExpressionBit(core);
                for (QBitArray const& bits : qAsConst(image))
                    write(VEK::bit2str(bits), "WRITE_REGISTOR");
            } else if (verb == "read") {
                lines += section(rest.split(QRegularExpression("[:/@*]")));
            } else {
                lines += "CMD='CLOSE'";
            }
        }
        return lines;
    }

    /// Does one thing after the other, each with what is asked for then. The chip says "yes" or
    /// "no" to a poll and returns the "sections" that it owes.
    void play(std::initializer_list<std::pair<QString, QString>> steps)
    {
        for (auto const& [action, expected] : steps) {
            QList<int> numbers;
            for (QString const& word : action.split(' ').mid(1))
                numbers += word.toInt();
            VEK::DataManager* const manager =
                m_isLite ? static_cast<VEK::DataManager*>(m_lite.get()) : m_manager.get();
            if (action == "yes" || action == "no")
                m_chip->answerPoll(action == "yes");
            else if (action == "sections")
                for (int count = m_chip->owed.size(); count > 0; --count)
                    m_chip->answer();
            else if (action == "tick")
                manager->checkState();
            else if (action == "stop")
                manager->stopDataTrigger();
            else if (action == "force")
                m_isLite ? m_lite->forceDataTrigger() : m_manager->forceDataTrigger();
            else
                m_isLite ? m_lite->startDataTrigger(numbers.first())
                         : m_manager->startDataTrigger(numbers);
            QCOMPARE(m_chip->takeLines() << action, asked(expected) << action);
        }
    }

    std::unique_ptr<Chip> m_chip;
    std::unique_ptr<VEK::VekStandardDataManager> m_manager;
    std::unique_ptr<VEK::VekLiteDataManager> m_lite;
    bool m_isLite = false; ///< Whose dialogue is told.
    int m_width = 16;      ///< Of a field.
    QString m_device;
    QStringList m_news;
    QStringList m_reads; ///< Size and number of each section of a window.

private:
    QStringList section(QStringList const& at) const
    {
        QString const place = QString("SECTION=%1 SECTION_COUNT=%2").arg(at[1], at[2]);
        int const count = at[4].toInt();
        return {"CMD='WRITE' DATA=00111" + number(at[3].toInt(), 16) +
                    number(m_isLite ? 0 : count, m_width) + " OPRATE='BRUST_READ' " + place +
                    " WINDOW=" + at[0],
                "CMD='READ' OPRATE='READ_RAM' " + place +
                    QString(" SIZE=%1").arg(m_width * count + (m_isLite ? 1 : 33)) +
                    " WINDOW=" + at[0]};
    }

    void note(QList<QBitArray> const& sections)
    {
        QStringList told;
        for (QBitArray const& bits : sections)
            told += QString("%1:%2")
                        .arg(bits.size())
                        .arg(VEK::bit2str(bits).rightRef(6).toInt(nullptr, 2));
        m_reads += told.join(' ');
    }

    /// Notes what a manager tells, in words.
    void listen(VEK::DataManager* manager)
    {
        using VEK::DataManager;
        auto const note = [this](char const* word) {
            return [this, word](int core) { m_news << QString("%1 %2").arg(word).arg(core); };
        };
        connect(manager, &DataManager::coreArmed, this, note("armed"));
        connect(manager, &DataManager::coreStopped, this, note("stopped"));
        connect(manager, &DataManager::triggerComplete, this, note("end"));
        connect(manager, &DataManager::stopTaken, this, [this] { m_news << "taken"; });
        connect(manager, &DataManager::coreFired, this, [this](int core, bool forced) {
            m_news << QString("fired %1").arg(core) + (forced ? " forced" : "");
        });
        connect(manager, &DataManager::windowIncomplete, this, [this](int core, int window) {
            m_news << QString("incomplete %1.%2").arg(core).arg(window);
        });
        connect(manager, &DataManager::readProgress, this, [this] { m_news << "section"; });
        manager->setTiming(0, 0);
    }

    TempFolder const m_folder;
};
