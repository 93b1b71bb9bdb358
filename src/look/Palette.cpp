#include "look/Palette.h"

#include <QColorSpace>
#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace MirlPlayer {

namespace {

constexpr int kSide = 32;
constexpr int kClusters = 8;
constexpr int kRounds = 10;
constexpr int kMaxKept = 4;
constexpr double kMinChroma = 0.04;     // below this a cluster counts as neutral
constexpr double kPaleLightness = 0.72; // neutrals lighter than this may still be kept
constexpr double kKeepDistance = 0.06;  // colours closer than this are one colour
constexpr double kFillDistance = 0.025; // derived fill-up colours may sit closer
constexpr double kOffStartPenalty = 0.03;

double squaredDistance(const OKLab& x, const OKLab& y) {
    const double dL = x.L - y.L;
    const double da = x.a - y.a;
    const double db = x.b - y.b;
    return dL * dL + da * da + db * db;
}

// Cluster centre -> displayable colour -> lifted -> back, so that distances are measured between
// the colours the user will actually see.
OKLCH lifted(const OKLCH& c) {
    return toOklch(hsbToOklab(liftColour(oklchToHsb(c))));
}

bool farFromAll(const OKLCH& c, const QList<OKLCH>& kept, double minDistance) {
    return std::all_of(kept.begin(), kept.end(),
                       [&](const OKLCH& k) { return distance(c, k) > minDistance; });
}

void enumerateOrders(QList<int>& prefix, QList<int>& rest, QList<QList<int>>& out) {
    if (rest.isEmpty()) {
        out.append(prefix);
        return;
    }
    for (qsizetype i = 0; i < rest.size(); ++i) {
        const int pick = rest[i];
        prefix.append(pick);
        rest.removeAt(i);
        enumerateOrders(prefix, rest, out);
        rest.insert(i, pick);
        prefix.removeLast();
    }
}

struct Tap {
    int index;
    double weight;
};

// For each of `out` output cells over `in` source cells: the source cells it covers and the
// fraction of the cell each one makes up. Works for enlarging as well as shrinking.
QList<QList<Tap>> areaTaps(int in, int out) {
    QList<QList<Tap>> taps(out);
    const double span = double(in) / out;
    for (int o = 0; o < out; ++o) {
        const double from = o * span;
        const double to = (o + 1) * span;
        for (int i = int(std::floor(from)); i < int(std::ceil(to)) && i < in; ++i) {
            const double overlap = std::min(to, i + 1.0) - std::max(from, double(i));
            if (overlap > 0)
                taps[o].append({i, overlap / span});
        }
    }
    return taps;
}

// The image drawn at 32 x 32 into an 8-bit sRGB bitmap with premultiplied alpha, by averaging
// the area each bitmap pixel covers, so transparent parts count as black as they would in a
// cleared bitmap. Done by hand rather than with QImage::scaled: Qt spreads large scaling jobs
// over its thread pool, and on a busy machine waiting for it costs far more than the work.
QImage thumbnail(const QImage& image) {
    QImage src = image;
    switch (src.format()) {
    case QImage::Format_RGB32:
    case QImage::Format_ARGB32:
    case QImage::Format_ARGB32_Premultiplied:
        break;
    default:
        src = src.convertToFormat(QImage::Format_ARGB32_Premultiplied);
        break;
    }
    if (src.isNull() || src.width() <= 0 || src.height() <= 0)
        return {};
    const bool straightAlpha = src.format() == QImage::Format_ARGB32;
    const bool opaque = src.format() == QImage::Format_RGB32;

    const QList<QList<Tap>> columns = areaTaps(src.width(), kSide);
    const QList<QList<Tap>> rows = areaTaps(src.height(), kSide);
    // Which output rows each source row feeds, with what weight.
    QList<QList<Tap>> feeds(src.height());
    for (int oy = 0; oy < kSide; ++oy) {
        for (const Tap& t : rows[oy])
            feeds[t.index].append({oy, t.weight});
    }

    std::vector<double> acc(kSide * kSide * 4, 0.0);
    std::vector<double> line(kSide * 4);
    for (int sy = 0; sy < src.height(); ++sy) {
        if (feeds[sy].isEmpty())
            continue;
        const QRgb* px = reinterpret_cast<const QRgb*>(src.constScanLine(sy));
        std::fill(line.begin(), line.end(), 0.0);
        for (int ox = 0; ox < kSide; ++ox) {
            double* out = &line[ox * 4];
            for (const Tap& t : columns[ox]) {
                const QRgb c = px[t.index];
                const double a = opaque ? 255.0 : double(qAlpha(c));
                const double k = straightAlpha ? t.weight * a / 255.0 : t.weight;
                out[0] += qRed(c) * k;
                out[1] += qGreen(c) * k;
                out[2] += qBlue(c) * k;
                out[3] += a * t.weight;
            }
        }
        for (const Tap& f : feeds[sy]) {
            double* out = &acc[f.index * kSide * 4];
            for (int i = 0; i < kSide * 4; ++i)
                out[i] += line[i] * f.weight;
        }
    }

    QImage small(kSide, kSide, QImage::Format_RGBA8888_Premultiplied);
    for (int y = 0; y < kSide; ++y) {
        uchar* row = small.scanLine(y);
        for (int i = 0; i < kSide * 4; ++i)
            row[i] = uchar(std::clamp(std::lround(acc[y * kSide * 4 + i]), 0L, 255L));
    }
    // Covers tagged with another colour space are brought into sRGB, as drawing into an sRGB
    // bitmap would.
    const QColorSpace space = image.colorSpace();
    if (space.isValid() && space != QColorSpace(QColorSpace::SRgb)) {
        small.setColorSpace(space);
        small.convertToColorSpace(QColorSpace(QColorSpace::SRgb));
    }
    return small;
}

} // namespace

QList<Cluster> weightedKMeans(const QList<OKLab>& points, const QList<double>& weights, int k) {
    const qsizetype n = std::min(points.size(), weights.size());
    if (n == 0 || k <= 0)
        return {};

    QList<OKLab> centres;
    qsizetype heaviest = 0;
    for (qsizetype i = 1; i < n; ++i) {
        if (weights[i] > weights[heaviest])
            heaviest = i;
    }
    centres.append(points[heaviest]);

    while (centres.size() < k) {
        qsizetype best = -1;
        double bestScore = -1;
        double bestD = 0;
        for (qsizetype i = 0; i < n; ++i) {
            double d = std::numeric_limits<double>::infinity();
            for (const OKLab& c : centres)
                d = std::min(d, squaredDistance(points[i], c));
            const double score = weights[i] * d;
            if (bestScore < score) {
                bestScore = score;
                best = i;
                bestD = d;
            }
        }
        if (best < 0 || bestD < 1e-6)
            break;
        centres.append(points[best]);
    }

    const qsizetype m = centres.size();
    QList<double> total(m, 0.0);
    QList<int> owner(n, 0);
    for (int round = 0; round < kRounds; ++round) {
        for (qsizetype i = 0; i < n; ++i) {
            int nearest = 0;
            double nearestD = squaredDistance(points[i], centres[0]);
            for (qsizetype c = 1; c < m; ++c) {
                const double d = squaredDistance(points[i], centres[c]);
                if (d < nearestD) {
                    nearestD = d;
                    nearest = int(c);
                }
            }
            owner[i] = nearest;
        }
        QList<OKLab> sum(m);
        std::fill(total.begin(), total.end(), 0.0);
        for (qsizetype i = 0; i < n; ++i) {
            const double w = weights[i];
            OKLab& s = sum[owner[i]];
            s.L += points[i].L * w;
            s.a += points[i].a * w;
            s.b += points[i].b * w;
            total[owner[i]] += w;
        }
        for (qsizetype c = 0; c < m; ++c) {
            if (total[c] > 0)
                centres[c] = {sum[c].L / total[c], sum[c].a / total[c], sum[c].b / total[c]};
        }
    }

    QList<Cluster> out;
    for (qsizetype c = 0; c < m; ++c) {
        if (total[c] > 0)
            out.append({centres[c], total[c]});
    }
    std::stable_sort(out.begin(), out.end(),
                     [](const Cluster& x, const Cluster& y) { return x.weight > y.weight; });
    return out;
}

QList<OKLCH> shortestPathOrder(const QList<OKLCH>& four) {
    if (four.size() < 2)
        return four;
    QList<int> prefix;
    QList<int> rest;
    for (int i = 0; i < four.size(); ++i)
        rest.append(i);
    QList<QList<int>> orders;
    enumerateOrders(prefix, rest, orders);

    const QList<int>* best = nullptr;
    double bestLength = std::numeric_limits<double>::infinity();
    for (const QList<int>& order : orders) {
        double length = order.first() == 0 ? 0.0 : kOffStartPenalty;
        for (qsizetype i = 1; i < order.size(); ++i)
            length += distance(four[order[i - 1]], four[order[i]]);
        if (length < bestLength) {
            bestLength = length;
            best = &order;
        }
    }
    QList<OKLCH> out;
    for (int i : *best)
        out.append(four[i]);
    return out;
}

Palette extractPalette(const QImage& image) {
    if (image.isNull())
        return {};
    const QImage small = thumbnail(image);
    if (small.isNull() || small.width() != kSide || small.height() != kSide)
        return {};

    QList<OKLab> points;
    QList<double> weights;
    points.reserve(kSide * kSide);
    weights.reserve(kSide * kSide);
    for (int y = 0; y < kSide; ++y) {
        const uchar* row = small.constScanLine(y);
        for (int x = 0; x < kSide; ++x) {
            const uchar* px = row + x * 4;
            const OKLab lab = srgbToOklab({px[0] / 255.0, px[1] / 255.0, px[2] / 255.0});
            points.append(lab);
            // Colourful pixels count more, so a small splash of colour is not drowned by a
            // large neutral background.
            weights.append(std::sqrt(lab.a * lab.a + lab.b * lab.b) * 8.0 + 1.0);
        }
    }

    const QList<Cluster> clusters = weightedKMeans(points, weights, kClusters);
    if (clusters.isEmpty())
        return {};

    QList<OKLCH> kept;
    auto consider = [&](const Cluster& cluster) {
        const OKLCH c = lifted(toOklch(cluster.centre));
        if (kept.size() >= kMaxKept)
            return;
        if (kept.isEmpty() || farFromAll(c, kept, kKeepDistance))
            kept.append(c);
    };
    for (const Cluster& cluster : clusters) {
        if (toOklch(cluster.centre).C >= kMinChroma)
            consider(cluster);
    }
    for (const Cluster& cluster : clusters) {
        const OKLCH c = toOklch(cluster.centre);
        if (c.C < kMinChroma && c.L > kPaleLightness)
            consider(cluster);
    }
    if (kept.isEmpty())
        kept.append(lifted(toOklch(clusters.first().centre)));

    // Too few distinct colours: derive neighbours of the dominant one.
    const OKLCH first = kept.first();
    const OKLCH derived[] = {
        {first.L + 0.08, 0.9 * first.C, first.h + 8},
        {first.L - 0.07, first.C, first.h - 8},
        {first.L + 0.15, 0.7 * first.C, first.h + 14},
        {first.L - 0.12, 1.1 * first.C, first.h - 14},
        {first.L + 0.04, 0.5 * first.C, first.h},
        {first.L - 0.04, 0.75 * first.C, first.h + 20},
    };
    for (OKLCH d : derived) {
        if (kept.size() >= kMaxKept)
            break;
        d.h = std::fmod(d.h + 360.0, 360.0);
        const OKLCH c = lifted(d);
        if (farFromAll(c, kept, kFillDistance))
            kept.append(c);
    }
    while (kept.size() < kMaxKept)
        kept.append(kept.first());

    Palette palette;
    for (const OKLCH& c : shortestPathOrder(kept))
        palette.append(oklchToHsb(c));
    return palette;
}

QColor accentColour(const Palette& palette) {
    return palette.isEmpty() ? QColor(Qt::white) : toColor(palette.first(), 1.0);
}

} // namespace MirlPlayer
