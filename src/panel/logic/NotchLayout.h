#pragma once

#include "look/Skin.h"
#include "panel/logic/Spring.h"

#include <QObject>
#include <QSizeF>
#include <functional>
#include <optional>

namespace MirlPlayer {

// The stages of the panel, in order: stages are compared with less-than.
enum class Stage { rest, peek, open };
QString stageName(Stage stage);

// The published geometry of the pill inside the fixed, screen-wide panel window. The controller
// writes it; the views only read it. A stage change never moves the window: it moves these
// values, and the views animate them with `motion`.
class NotchLayout : public QObject {
    Q_OBJECT
    Q_PROPERTY(QSizeF notchSize READ notchSize NOTIFY notchSizeChanged)
    Q_PROPERTY(bool expanded READ expanded NOTIFY expandedChanged)
    Q_PROPERTY(bool libraryOpen READ libraryOpen NOTIFY libraryOpenChanged)
    Q_PROPERTY(double pillCenterX READ pillCenterX NOTIFY pillCenterXChanged)
    Q_PROPERTY(double pillTop READ pillTop NOTIFY pillTopChanged)
    Q_PROPERTY(QSizeF pillSize READ pillSize NOTIFY pillSizeChanged)
public:
    static constexpr double gap = 6;
    static constexpr QSizeF fallbackNotchSize{220, 32};
    static constexpr QSizeF collapsedPill{66, 24};
    static constexpr QSizeF visualizerPill{580, 168};
    static constexpr QSizeF artworkPill{248, 336};
    static constexpr QSizeF libraryPill{640, 460};
    static constexpr double rightMargin = 12;
    static constexpr double upRightMargin = 44;

    explicit NotchLayout(QObject* parent = nullptr);

    QSizeF notchSize() const { return m_notchSize; }
    bool expanded() const { return m_expanded; }
    bool libraryOpen() const { return m_libraryOpen; }
    double pillCenterX() const { return m_pillCenterX; }
    double pillTop() const { return m_pillTop; }
    // The pill's size in force: the expanded size when expanded, else `collapsedPill`.
    QSizeF pillSize() const { return m_pillSize; }

    // The motion with which the latest values were written; none means "jump".
    std::optional<Spring> motion() const { return m_motion; }

    void setNotchSize(QSizeF size);
    void setLibraryOpen(bool open);
    // Writes the placement of the pill together, with one motion.
    void setPlacement(double centerX, double top, bool expanded, QSizeF size,
                      std::optional<Spring> motion);
    void setMotion(std::optional<Spring> motion);

    // Set by the panel controller; the views call it to open or close the library.
    std::function<void(bool)> onLibraryToggle;
    // What the views call: asks the controller, which arms the pointer guard and then runs
    // `onLibraryToggle`.
    Q_INVOKABLE void requestLibrary(bool open) { Q_EMIT libraryRequested(open); }

Q_SIGNALS:
    void notchSizeChanged();
    void expandedChanged(bool expanded);
    void libraryOpenChanged(bool libraryOpen);
    void pillCenterXChanged();
    void pillTopChanged();
    void pillSizeChanged();
    void libraryRequested(bool open);

private:
    QSizeF m_notchSize = fallbackNotchSize;
    bool m_expanded = false;
    bool m_libraryOpen = false;
    double m_pillCenterX = 0;
    double m_pillTop = 0;
    QSizeF m_pillSize = collapsedPill;
    std::optional<Spring> m_motion;
};

} // namespace MirlPlayer
