#include "core/MainLoopTicker.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QThread>

#include <glib.h>

namespace MirlPlayer {

struct MainLoopTicker::Source {
    GSource base; // first: the GSource* GLib hands back is the Source*
    std::function<void()>* action;
    gint64 intervalUs;
    gint64 due; // monotonic microseconds; -1 while stopped
};

namespace {

gboolean dispatchTick(GSource* base, GSourceFunc, gpointer) {
    auto* source = reinterpret_cast<MainLoopTicker::Source*>(base);
    const gint64 now = g_source_get_time(base);
    source->due += source->intervalUs;
    if (source->due <= now)
        source->due = now + source->intervalUs;
    g_source_set_ready_time(base, source->due);
    // Last: the action may stop or even destroy the ticker; GLib keeps the source alive until
    // the dispatch returns.
    (*source->action)();
    return G_SOURCE_CONTINUE;
}

// Only its ready time makes the source due: no prepare, check or file of its own.
GSourceFuncs tickerFuncs = {nullptr, nullptr, dispatchTick, nullptr, nullptr, nullptr};

bool glibMainLoop() {
    const QCoreApplication* app = QCoreApplication::instance();
    const QAbstractEventDispatcher* dispatcher = QAbstractEventDispatcher::instance();
    // The GLib dispatcher of the main thread iterates GLib's default context.
    return app && QThread::currentThread() == app->thread() && dispatcher &&
           dispatcher->inherits("QEventDispatcherGlib");
}

} // namespace

MainLoopTicker::MainLoopTicker(int intervalMs, std::function<void()> action)
    : m_intervalMs(intervalMs)
    , m_action(std::move(action)) {
    m_timer.setInterval(intervalMs);
    m_timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { m_action(); });
}

MainLoopTicker::~MainLoopTicker() {
    if (m_source) {
        g_source_destroy(&m_source->base);
        g_source_unref(&m_source->base);
    }
}

void MainLoopTicker::start() {
    if (!m_decided) {
        m_decided = true;
        if (glibMainLoop()) {
            GSource* base = g_source_new(&tickerFuncs, sizeof(Source));
            m_source = reinterpret_cast<Source*>(base);
            m_source->action = &m_action;
            m_source->intervalUs = gint64(m_intervalMs) * 1000;
            m_source->due = -1;
            // Not recursive: GLib blocks the source while it runs, so that setting the next due
            // time from there does not also wake the loop for nothing.
            g_source_attach(base, g_main_context_default());
        }
    }
    if (!m_source) {
        m_timer.start();
        return;
    }
    m_source->due = g_get_monotonic_time() + m_source->intervalUs;
    g_source_set_ready_time(&m_source->base, m_source->due);
}

void MainLoopTicker::stop() {
    if (!m_source) {
        m_timer.stop();
        return;
    }
    m_source->due = -1;
    g_source_set_ready_time(&m_source->base, -1);
}

bool MainLoopTicker::isActive() const {
    return m_source ? m_source->due != -1 : m_timer.isActive();
}

} // namespace MirlPlayer
