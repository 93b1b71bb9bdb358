#pragma once

// Owning handles for PipeWire's C objects and the two helpers every user of them needs: a
// listener registration that removes itself, and a scoped hold of a thread loop's lock.

#include <QHash>
#include <QString>

#include <pipewire/pipewire.h>

#include <cstring>
#include <memory>
#include <mutex>

namespace MirlPlayer::PipeWire {

inline void initPipeWire() {
    static std::once_flag once;
    std::call_once(once, [] { pw_init(nullptr, nullptr); });
}

// Owning handles. Each deleter is the one call that frees its C object.
struct ThreadLoopDeleter {
    void operator()(pw_thread_loop* loop) const { pw_thread_loop_destroy(loop); }
};
struct ContextDeleter {
    void operator()(pw_context* context) const { pw_context_destroy(context); }
};
struct CoreDeleter {
    void operator()(pw_core* core) const { pw_core_disconnect(core); }
};
struct ProxyDeleter {
    void operator()(void* proxy) const { pw_proxy_destroy(static_cast<pw_proxy*>(proxy)); }
};
struct StreamDeleter {
    void operator()(pw_stream* stream) const { pw_stream_destroy(stream); }
};
struct PropertiesDeleter {
    void operator()(pw_properties* props) const { pw_properties_free(props); }
};

using ThreadLoopPtr = std::unique_ptr<pw_thread_loop, ThreadLoopDeleter>;
using ContextPtr = std::unique_ptr<pw_context, ContextDeleter>;
using CorePtr = std::unique_ptr<pw_core, CoreDeleter>;
using RegistryPtr = std::unique_ptr<pw_registry, ProxyDeleter>;
using ClientPtr = std::unique_ptr<pw_client, ProxyDeleter>;
using StreamPtr = std::unique_ptr<pw_stream, StreamDeleter>;
using PropertiesPtr = std::unique_ptr<pw_properties, PropertiesDeleter>;

// A listener registration. It must be removed before the object it listens to is freed, so
// owners declare it after the handle: members are destroyed in reverse order.
class Listener {
public:
    Listener() { std::memset(&m_hook, 0, sizeof m_hook); }
    ~Listener() { remove(); }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    spa_hook* get() { return &m_hook; }
    void remove() {
        if (m_hook.link.next) {
            spa_hook_remove(&m_hook);
            std::memset(&m_hook, 0, sizeof m_hook);
        }
    }

private:
    spa_hook m_hook;
};

// Holds the thread loop's lock for a scope. The loop thread takes the same lock while it runs
// callbacks, so while it is held no callback runs.
class LoopLock {
public:
    explicit LoopLock(pw_thread_loop* loop)
        : m_loop(loop) {
        pw_thread_loop_lock(m_loop);
    }
    ~LoopLock() { pw_thread_loop_unlock(m_loop); }
    LoopLock(const LoopLock&) = delete;
    LoopLock& operator=(const LoopLock&) = delete;

private:
    pw_thread_loop* m_loop;
};

inline QHash<QString, QString> toHash(const spa_dict* dict) {
    QHash<QString, QString> out;
    if (!dict)
        return out;
    const spa_dict_item* item;
    spa_dict_for_each(item, dict) {
        if (item->key && item->value)
            out.insert(QString::fromUtf8(item->key), QString::fromUtf8(item->value));
    }
    return out;
}

} // namespace MirlPlayer::PipeWire
