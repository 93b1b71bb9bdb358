#include "audio/StereoStore.h"

namespace MirlPlayer {

void StereoStore::update(const Curve& curve) {
    m_curve = curve;
    ++m_generation;
}

void StereoStore::addReader() {
    if (++m_readers == 1 && onReadersChanged)
        onReadersChanged(true);
}

void StereoStore::removeReader() {
    if (m_readers > 0 && --m_readers == 0 && onReadersChanged)
        onReadersChanged(false);
}

} // namespace MirlPlayer
