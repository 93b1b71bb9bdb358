#pragma once

#include "library/ScrollEdges.h"

#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <QTimer>
#include <QtQml/qqmlregistration.h>

namespace MirlPlayer {

class SpotifyBrowser;
class SpotifyItemListModel;

// Watches one list of the library as it scrolls: the filter field above it slips away on the way
// down and returns on the way up; a touchpad pull past the top refreshes it (a mouse wheel never
// does); and the first visible row is remembered per list, so the list opens where it was left,
// after a restart too. The view reports its offset and first row; wheel events are read from the
// list itself.
class LibraryScroll : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QQuickItem* target READ target WRITE setTarget NOTIFY targetChanged)
    Q_PROPERTY(MirlPlayer::SpotifyItemListModel* model MEMBER m_model NOTIFY modelChanged)
    // Whether this list's place is remembered in the browser (its own list only).
    Q_PROPERTY(bool remember MEMBER m_remember NOTIFY modelChanged)
    Q_PROPERTY(bool canHide MEMBER m_canHide NOTIFY canHideChanged)
    Q_PROPERTY(double distance READ distance WRITE setDistance NOTIFY pullChanged)
    Q_PROPERTY(bool filterHidden READ filterHidden NOTIFY filterHiddenChanged)
    Q_PROPERTY(bool atTop READ atTop NOTIFY atTopChanged)
    Q_PROPERTY(double pull READ pull NOTIFY pullChanged)
    Q_PROPERTY(double pullOffset READ pullOffset NOTIFY pullChanged)

public:
    static constexpr double pullResistance = 0.5; // the list follows half the finger's travel
    static constexpr int pullReleaseMs = 140;     // a pause in touchpad events ends the pull

    explicit LibraryScroll(QObject* parent = nullptr);
    LibraryScroll(SpotifyBrowser& browser, QObject* parent = nullptr);
    ~LibraryScroll() override;

    QQuickItem* target() const { return m_target; }
    void setTarget(QQuickItem* target);
    double distance() const { return m_pull.distance; }
    void setDistance(double distance);
    bool filterHidden() const { return m_away.hidden; }
    bool atTop() const { return m_offset <= 0.5; }
    double pull() const { return m_pull.progress; }
    double pullOffset() const { return m_pullOffset; }

    // The list's offset from its top (a plain bounds change, no wheel movement).
    Q_INVOKABLE void offsetChanged(double offset);
    // The first row the list shows.
    Q_INVOKABLE void firstRowChanged(int row);
    // The row to bring back for the list now shown, once its rows are there; -1 when none (yet).
    Q_INVOKABLE int rowToRestore();

    // One wheel event over the list. True when the pull took it.
    bool wheel(double pixelDeltaY, double angleDeltaY, Qt::ScrollPhase phase);

Q_SIGNALS:
    void targetChanged();
    void modelChanged();
    void canHideChanged();
    void filterHiddenChanged();
    void atTopChanged();
    void pullChanged();
    void refreshRequested();
    // The list should show `row` at its top.
    void restoreTo(int row);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void track(double delta, bool frozen);
    void setPullOffset(double offset);
    void routeChanged();
    void tryRestore();
    QString key() const;

    SpotifyBrowser& m_browser;
    QPointer<QQuickItem> m_target;
    QPointer<SpotifyItemListModel> m_model;
    bool m_remember = false;
    bool m_canHide = true;
    double m_offset = 0;
    ScrollAwayState m_away;
    PullToRefreshState m_pull;
    double m_pullOffset = 0;
    QTimer m_pullRelease;
    QString m_restoreKey; // the list whose place is still to be brought back
    QString m_savedID;    // the row last remembered
    int m_firstRow = -1;
};

} // namespace MirlPlayer
