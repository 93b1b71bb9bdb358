#pragma once

#include <QObject>
#include <QVariantMap>

namespace MirlPlayer {

// The drawing choices of the Theme's player style for the views of the timeline and transport.
class ControlStyleModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString styleID READ styleID WRITE setStyleID NOTIFY styleChanged)
    Q_PROPERTY(QVariantMap style READ style NOTIFY styleChanged)
public:
    using QObject::QObject;

    QString styleID() const { return m_styleID; }
    void setStyleID(const QString& id);
    QVariantMap style() const;

Q_SIGNALS:
    void styleChanged();

private:
    QString m_styleID;
};

} // namespace MirlPlayer
