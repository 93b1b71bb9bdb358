#include "audio/StereoStore.h"

namespace MirlPlayer {

void StereoStore::update(const Curve& curve) {
    m_curve = curve;
    ++m_generation;
}

} // namespace MirlPlayer
