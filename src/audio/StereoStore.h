#pragma once

#include <QtGlobal>
#include <array>

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

private:
    Curve m_curve{};
    quint64 m_generation = 0;
};

} // namespace MirlPlayer
