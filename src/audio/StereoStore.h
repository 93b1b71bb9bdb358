#pragma once

#include <QtGlobal>
#include <array>
#include <functional>

namespace MirlPlayer {

// The stereo curve for the stereo renderers. Deliberately not observable: its readers draw on
// their own frame clock and poll, comparing `generation` with the value they last saw. Every
// update counts, even one equal to the last (a teardown's zeros must reach a reader).
class StereoStore {
public:
    static constexpr int columns = 96;
    using Curve = std::array<float, columns>;

    const Curve& curve() const { return m_curve; }
    quint64 generation() const { return m_generation; }
    void update(const Curve& curve);

    // The views that read the curve count themselves in while they are on screen, so that the
    // analysis runs only while somebody reads it. `onReadersChanged` hears when the first comes
    // and the last goes.
    void addReader();
    void removeReader();
    bool hasReaders() const { return m_readers > 0; }
    std::function<void(bool)> onReadersChanged;

private:
    Curve m_curve{};
    quint64 m_generation = 0;
    int m_readers = 0;
};

} // namespace MirlPlayer
