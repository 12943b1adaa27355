#pragma once

#include "results/dataformatter.h"
#include "results/signaldata.h"
#include "wavemonitor/localized.h"

#include <QBitArray>
#include <QDomElement>
#include <QList>
#include <QVector>
#include <QWidget>

#include <type_traits>

class QLabel;

namespace WaveMonitor {

struct BusData;
struct DrawConfig;
struct Notification;
class OverviewStrip;
class RulerView;
class SignalTreeModel;
class SignalTreeView;
class TimeMarks;
class WaveView;

/// Where a user of a monitor stands, for a host that keeps it. Times count in samples.
struct ViewState
{
    int cursorTime = 0;
    QList<int> markerTimes; ///< The active one first.
    double zoomRate = 1.0;
    double leftTime = 0.0; ///< At the left edge of the waves; may lie within a sample.
};

/// A monitor as a host embeds it: the tree of rows, the ruler and the waves, which scroll, zoom and
/// select together. The host gives it a capture, row by row or as a "Window" element, and saves and
/// restores it; everything else happens through the context menus inside.
///
/// Times count in samples. Monitors of one process are told apart by their `domain`, which must
/// differ. Parts of the monitor are children of the widget.
class WaveMonitorWidget : public QWidget, public Localized
{
    Q_OBJECT
    Q_PROPERTY(qreal zoomRate READ zoomRate WRITE setZoomRate)
    Q_PROPERTY(quint64 domain READ domain WRITE setDomain)

public:
    /// `config` may be null; only its column widths are used, for the first width of the tree.
    explicit WaveMonitorWidget(unsigned long long domain, QWidget* parent = nullptr,
                               DrawConfig* config = nullptr);

    /// Takes a domain that no other monitor has: for hosts that need not know it, and for forms
    /// made with Qt Designer, whose code gives a widget nothing but its parent. A template, so that
    /// a domain of 0 is no null pointer.
    template <typename Parent, typename = std::enable_if_t<std::is_base_of<QWidget, Parent>::value>>
    explicit WaveMonitorWidget(Parent* parent)
        : WaveMonitorWidget(quint64(reinterpret_cast<quintptr>(this)), parent)
    {}

    ~WaveMonitorWidget() override;

    /// Adds a row to the capture. A signal whose id is there already replaces its data.
    void addData(SignalData const& signal);
    void addData(BusData const& bus);

    /// The number of windows that lie one after the other in the data; less than 1 counts as 1.
    void setWindowsNum(int count);
    int windowsNum() const { return m_windowsNum; }

    /// The trigger's sample within one window. The cursor goes there.
    void setTriggerPosition(int time);

    /// The default format of the monitor.
    void setDataFormat(DataFormat::Type type);
    DataFormat::Type dataFormat() const;

    /// New samples for the signals with the ids from 0 on; ignored unless there is a vector for
    /// each signal.
    void updataWaveDatas(QList<QBitArray> const& datas);

    void updateAutoCounter(int count);

    /// The window title says the core, or the window where `core` is -1.
    void setTitle(int window, int core);

    /// Centres the waves on a sample, at most the ruler's length.
    void jump(int time);

    /// The element "Window" with data and arrangement, made in the document but not placed in it.
    /// It has no attribute "index": whoever places it sets that.
    QDomElement save(QDomDocument& document) const;

    /// The element "Layout" alone, made in the document but not placed in it.
    QDomElement saveLayout(QDomDocument& document) const;

    /// Takes a "Window" element. Index 0 replaces everything; any other index, or none, appends its
    /// samples to the present signals.
    void restore(QDomElement const& window);

    /// Takes a "Layout" element: rows as they were arranged, over the present data.
    void restoreLayout(QDomElement const& layout);

    /// A new record, the caller's.
    DrawConfig* getDrawConfigs() const;

    /// Takes column widths, layout, format and zoom; null is ignored.
    void setWindowConfig(DrawConfig* config);

    int cursorTime() const;

    /// Moves the cursor, held within the samples, without scrolling to it.
    void setCursorTime(int time);

    /// The times of the markers, the active one first.
    QList<int> markerTimes() const;

    /// Replaces all markers; times are held within the samples.
    void setMarkerTimes(QList<int> const& times);

    /// What a session may keep beside `save`, and a host may put back over other samples. It needs
    /// the samples in place and takes effect at once, also before the monitor is shown.
    ViewState viewState() const;
    void setViewState(ViewState const& state);

    double zoomRate() const { return m_zoomRate; }

    /// Stores the rate and tells nobody; `zoomTo` zooms. Ignored unless finite and above 0.
    void setZoomRate(double rate);

    /// Zooms to a rate, which is held within 1/256 and 16. Ignored unless finite and above 0.
    void zoomTo(double rate);

    /// Puts the model's wave items one below the other, 30 apart, or takes all of them away.
    void rearrangeWaveItems();
    void removeAllWaveItems();

    /// Whether a strip above the ruler shows the whole capture: its windows, triggers, markers and
    /// cursor, how densely its rows change, and the part that the waves show, which a click or a
    /// drag moves. It makes the ruler's panel 24 pixels higher. Off at the start, and then nothing
    /// of the layout differs from a monitor without it.
    bool isOverviewVisible() const;
    void setOverviewVisible(bool visible);

    SignalTreeModel* model() const { return m_model; }
    SignalTreeView* treeView() const { return m_treeView; }
    WaveView* waveView() const { return m_waveView; }
    RulerView* rulerView() const { return m_rulerView; }

    Q_INVOKABLE void handleEvents(Notification* note);

    /// Swallows the key presses of the objects that it watches: the wave view and the ruler.
    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    void updateMarkerAct();

    /// The user, or the host by calling such an operation, has edited the arrangement of the rows:
    /// what `saveLayout` gives is another one now. See `SignalTreeModel::layoutEdited`.
    void layoutEdited();

public Q_SLOTS:
    void zoomIn();
    void zoomOut();

    /// Shows the whole capture, as far as the least zoom rate goes. Without data nothing changes.
    /// Asked for before the monitor is first shown, this is done again then, in its real width,
    /// unless another zoom was set since.
    void zoomFit();

    void slots_sectionResized(int index, int oldSize, int newSize);
    void gotoCursor();
    void gotoTime0();
    void gotoLastTime();
    void previousTransition();
    void nextTransition();

    /// On the first sample from the cursor on that has neither a marker nor the trigger.
    void addMarker();

    /// The cursor goes to the next marked sample, a marker or a trigger.
    void previousMarker();
    void nextMarker();
    void deleteAllMarkers();
    void onUpdateCursorTime();

protected:
    void showEvent(QShowEvent* event) override;

private:
    void makeTree(int width);
    void makeCaptions();
    void placeCaptions();
    void makeViews();
    void layOut();
    void followTree(int value);
    void dataChanged();
    void moveCursor(int time);
    TimeMarks marks() const;

    SignalTreeModel* m_model = nullptr;
    SignalTreeView* m_treeView = nullptr;
    WaveView* m_waveView = nullptr;
    RulerView* m_rulerView = nullptr;
    OverviewStrip* m_overview = nullptr; // made when it is first shown
    QLabel* m_autoCounterLabel = nullptr;
    QList<QLabel*> m_headerLabels;
    QVector<int> m_captionShifts; // of each caption against its section, in pixels
    double m_zoomRate = 1.0;
    int m_unheardZooms = 0; // posted, but not delivered yet
    bool m_wasShown = false;
    bool m_fitWhenShown = false;
    int m_coreIndex = 0;
    int m_windowIndex = 0;
    int m_windowsNum = 1;
};

} // namespace WaveMonitor
