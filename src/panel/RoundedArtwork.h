#pragma once

#include <QImage>
#include <QQuickPaintedItem>
#include <QString>

namespace MirlPlayer {

// The cover, filling its square (cropped to it) and clipped to its rounded corners with a smooth
// edge, as one picture that is painted again only when the cover, the corner or the size
// changes: a frame of the music draws it as a plain texture, with no mask pass and no layer.
// `source` is an "image://provider/id" of the view's engine or a file URL.
class RoundedArtwork : public QQuickPaintedItem {
    Q_OBJECT
    Q_PROPERTY(QString source READ source WRITE setSource NOTIFY sourceChanged)
    Q_PROPERTY(double corner READ corner WRITE setCorner NOTIFY cornerChanged)
    Q_PROPERTY(bool ready READ ready NOTIFY sourceChanged)
public:
    explicit RoundedArtwork(QQuickItem* parent = nullptr);

    QString source() const { return m_source; }
    void setSource(const QString& source);
    double corner() const { return m_corner; }
    void setCorner(double corner);
    bool ready() const { return !m_image.isNull(); }

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void sourceChanged();
    void cornerChanged();

private:
    QImage load(const QString& source) const;

    QString m_source;
    double m_corner = 0;
    QImage m_image;
};

} // namespace MirlPlayer
