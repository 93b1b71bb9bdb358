#include "panel/ControlStyleModel.h"

#include "look/ControlStyle.h"

namespace MirlPlayer {

void ControlStyleModel::setStyleID(const QString& id) {
    if (id == m_styleID)
        return;
    m_styleID = id;
    Q_EMIT styleChanged();
}

QVariantMap ControlStyleModel::style() const {
    return controlStyle(m_styleID).toMap();
}

} // namespace MirlPlayer
