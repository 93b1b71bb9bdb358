#pragma once

#include "panel/PanelView.h"

#include <QObject>
#include <QRectF>
#include <QVariantMap>

namespace MirlPlayer {

// What the surface reads of a panel, held still: the stage, the shape in force and its corner,
// the artwork's address. The surface can be shown with it apart from the screen-wide panel, as
// the screenshots of the looks and the view tests do.
class StillPanel : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool expanded MEMBER m_expanded NOTIFY changed)
    Q_PROPERTY(QRectF cardRect MEMBER m_card NOTIFY changed)
    Q_PROPERTY(double cornerRadius MEMBER m_radius NOTIFY changed)
    Q_PROPERTY(bool libraryOpen MEMBER m_library NOTIFY changed)
    Q_PROPERTY(QString artworkSource MEMBER m_art NOTIFY changed)
    Q_PROPERTY(bool glassAvailable MEMBER m_glass NOTIFY changed)
public:
    using QObject::QObject;

    void setShape(bool expanded, const QRectF& shape, bool library = false) {
        m_expanded = expanded;
        m_card = shape;
        m_radius = expanded ? 30 : 12;
        m_library = library;
        Q_EMIT changed();
    }
    void setArtworkSource(const QString& source) {
        m_art = source;
        Q_EMIT changed();
    }
    void setGlassAvailable(bool on) {
        m_glass = on;
        Q_EMIT changed();
    }

    int libraryRequests = 0;
    Q_INVOKABLE void requestLibrary(bool open) { libraryRequests += open ? 1 : 0; }
    Q_INVOKABLE void openItem(const QVariantMap&) { requestLibrary(true); }
    Q_INVOKABLE static QString formatTime(double seconds) { return formatPlayTime(seconds); }

Q_SIGNALS:
    void changed();

private:
    bool m_expanded = false;
    QRectF m_card{723, 38, 66, 24};
    double m_radius = 12;
    bool m_library = false;
    QString m_art;
    bool m_glass = false;
};

} // namespace MirlPlayer
