#include "audio/PulseClient.h"

#include <pulse/pulseaudio.h>

#include <QMetaObject>

#include <algorithm>
#include <atomic>
#include <functional>

namespace tallowmere {

namespace {

int pidOf(const pa_proplist* properties)
{
    const char* text = pa_proplist_gets(properties, PA_PROP_APPLICATION_PROCESS_ID);
    return text ? QByteArray(text).toInt() : 0;
}

QString textOf(const pa_proplist* properties, const char* key)
{
    const char* text = pa_proplist_gets(properties, key);
    return text ? QString::fromUtf8(text) : QString();
}

// Holds the main-loop lock for a scope.
class LoopLock {
public:
    explicit LoopLock(pa_threaded_mainloop* loop) : loop_(loop) { pa_threaded_mainloop_lock(loop_); }
    ~LoopLock() { pa_threaded_mainloop_unlock(loop_); }
    LoopLock(const LoopLock&) = delete;
    LoopLock& operator=(const LoopLock&) = delete;

private:
    pa_threaded_mainloop* loop_;
};

} // namespace

// Everything here belongs to the server's loop thread or is touched under its lock.
struct PulseClient::Loop {
    PulseClient* owner = nullptr;
    PulseClient::Options options;
    pa_threaded_mainloop* mainloop = nullptr;
    pa_context* context = nullptr;
    pa_time_event* retry = nullptr;
    bool ready = false;
    bool collecting = false;
    bool collectAgain = false;
    int partsLeft = 0;
    PulseSnapshot pending;
    std::atomic<quint64> requests{0};

    pa_mainloop_api* api() const { return pa_threaded_mainloop_get_api(mainloop); }

    void post(std::function<void(PulseClient&)> work)
    {
        PulseClient* target = owner;
        QMetaObject::invokeMethod(target, [target, work = std::move(work)] { work(*target); }, Qt::QueuedConnection);
    }

    void connect()
    {
        pa_proplist* properties = pa_proplist_new();
        pa_proplist_sets(properties, PA_PROP_APPLICATION_NAME, "Tallowmere");
        pa_proplist_sets(properties, PA_PROP_APPLICATION_ID, "tallowmere");
        context = pa_context_new_with_proplist(api(), nullptr, properties);
        pa_proplist_free(properties);
        if (!context) {
            scheduleRetry();
            return;
        }
        pa_context_set_state_callback(context, &Loop::onState, this);
        const char* server = options.server.isEmpty() ? nullptr : options.server.constData();
        if (pa_context_connect(context, server, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
            scheduleRetry();
    }

    void dropContext()
    {
        if (!context)
            return;
        pa_context_set_state_callback(context, nullptr, nullptr);
        pa_context_set_subscribe_callback(context, nullptr, nullptr);
        pa_context_disconnect(context);
        pa_context_unref(context);
        context = nullptr;
    }

    void scheduleRetry()
    {
        if (retry)
            return;
        timeval when{};
        pa_timeval_add(pa_gettimeofday(&when), static_cast<pa_usec_t>(options.retryDelay.count()) * PA_USEC_PER_MSEC);
        retry = api()->time_new(api(), &when, &Loop::onRetry, this);
    }

    static void onRetry(pa_mainloop_api* api, pa_time_event* event, const timeval*, void* data)
    {
        auto* self = static_cast<Loop*>(data);
        api->time_free(event);
        self->retry = nullptr;
        // The old context is let go here, outside its own callbacks.
        self->dropContext();
        self->connect();
    }

    static void onState(pa_context* context, void* data)
    {
        auto* self = static_cast<Loop*>(data);
        switch (pa_context_get_state(context)) {
        case PA_CONTEXT_READY: {
            self->ready = true;
            pa_context_set_subscribe_callback(context, &Loop::onEvent, self);
            const auto mask = static_cast<pa_subscription_mask_t>(
                PA_SUBSCRIPTION_MASK_SINK_INPUT | PA_SUBSCRIPTION_MASK_SOURCE_OUTPUT | PA_SUBSCRIPTION_MASK_SERVER);
            if (pa_operation* op = pa_context_subscribe(context, mask, nullptr, nullptr))
                pa_operation_unref(op);
            self->post([](PulseClient& client) { client.setConnected(true); });
            break;
        }
        case PA_CONTEXT_FAILED:
        case PA_CONTEXT_TERMINATED:
            self->ready = false;
            if (self->collecting) {
                // Whatever was asked is answered as empty.
                self->pending = {};
                self->finishCollecting();
            }
            self->post([](PulseClient& client) { client.setConnected(false); });
            self->scheduleRetry();
            pa_threaded_mainloop_signal(self->mainloop, 0);
            break;
        default:
            break;
        }
    }

    static void onEvent(pa_context*, pa_subscription_event_type_t type, uint32_t, void* data)
    {
        auto* self = static_cast<Loop*>(data);
        const auto facility = type & PA_SUBSCRIPTION_EVENT_FACILITY_MASK;
        const auto kind = type & PA_SUBSCRIPTION_EVENT_TYPE_MASK;
        if ((facility == PA_SUBSCRIPTION_EVENT_SINK_INPUT && kind == PA_SUBSCRIPTION_EVENT_NEW)
            || (facility == PA_SUBSCRIPTION_EVENT_SERVER && kind == PA_SUBSCRIPTION_EVENT_CHANGE))
            self->post([](PulseClient& client) { emit client.streamsAppeared(); });
    }

    void startCollecting()
    {
        collecting = true;
        collectAgain = false;
        pending = {};
        partsLeft = 3;
        requests += 3;
        const auto issued = [this](pa_operation* op) {
            if (op)
                pa_operation_unref(op);
            else
                partDone();
        };
        issued(pa_context_get_server_info(context, &Loop::onServerInfo, this));
        issued(pa_context_get_sink_input_info_list(context, &Loop::onSinkInput, this));
        issued(pa_context_get_source_output_info_list(context, &Loop::onSourceOutput, this));
    }

    void partDone()
    {
        if (collecting && --partsLeft == 0)
            finishCollecting();
    }

    void finishCollecting()
    {
        collecting = false;
        post([snapshot = std::move(pending)](PulseClient& client) { emit client.snapshotReady(snapshot); });
        pending = {};
        if (collectAgain && ready)
            startCollecting();
    }

    static void onServerInfo(pa_context*, const pa_server_info* info, void* data)
    {
        auto* self = static_cast<Loop*>(data);
        if (info && info->default_sink_name)
            self->pending.defaultSink = QString::fromUtf8(info->default_sink_name);
        self->partDone();
    }

    static void onSinkInput(pa_context*, const pa_sink_input_info* info, int eol, void* data)
    {
        auto* self = static_cast<Loop*>(data);
        if (eol != 0) {
            if (eol < 0)
                self->pending.playback.clear();
            self->partDone();
            return;
        }
        PlaybackStream stream;
        stream.index = info->index;
        stream.pid = pidOf(info->proplist);
        stream.applicationName = textOf(info->proplist, PA_PROP_APPLICATION_NAME);
        stream.applicationId = textOf(info->proplist, PA_PROP_APPLICATION_ID);
        stream.portalAppId = textOf(info->proplist, "pipewire.access.portal.app_id");
        stream.corked = info->corked != 0;
        stream.channels = std::max<int>(1, info->volume.channels);
        stream.volume = pa_sw_volume_to_linear(pa_cvolume_max(&info->volume));
        self->pending.playback.append(stream);
    }

    static void onSourceOutput(pa_context*, const pa_source_output_info* info, int eol, void* data)
    {
        auto* self = static_cast<Loop*>(data);
        if (eol != 0) {
            if (eol < 0)
                self->pending.recordingPids.clear();
            self->partDone();
            return;
        }
        if (const int pid = pidOf(info->proplist); pid > 0 && !info->corked)
            self->pending.recordingPids.append(pid);
    }
};

PulseClient::PulseClient(Options options, QObject* parent)
    : QObject(parent), loop_(std::make_unique<Loop>())
{
    loop_->owner = this;
    loop_->options = std::move(options);
    loop_->mainloop = pa_threaded_mainloop_new();
    pa_threaded_mainloop_set_name(loop_->mainloop, "sound server");
    LoopLock lock(loop_->mainloop);
    pa_threaded_mainloop_start(loop_->mainloop);
    loop_->connect();
}

PulseClient::~PulseClient()
{
    {
        LoopLock lock(loop_->mainloop);
        if (loop_->retry)
            loop_->api()->time_free(loop_->retry);
        loop_->retry = nullptr;
        loop_->dropContext();
    }
    pa_threaded_mainloop_stop(loop_->mainloop);
    pa_threaded_mainloop_free(loop_->mainloop);
}

void PulseClient::setConnected(bool connected)
{
    if (connected_ == connected)
        return;
    connected_ = connected;
    emit connectedChanged(connected);
}

void PulseClient::requestSnapshot()
{
    LoopLock lock(loop_->mainloop);
    if (!loop_->ready) {
        loop_->post([](PulseClient& client) { emit client.snapshotReady({}); });
        return;
    }
    if (loop_->collecting)
        loop_->collectAgain = true;
    else
        loop_->startCollecting();
}

void PulseClient::setStreamVolume(std::uint32_t index, int channels, float gain)
{
    LoopLock lock(loop_->mainloop);
    if (!loop_->ready)
        return;
    pa_cvolume volume;
    pa_cvolume_set(&volume, static_cast<unsigned>(std::clamp(channels, 1, static_cast<int>(PA_CHANNELS_MAX))),
                   pa_sw_volume_from_linear(std::clamp(gain, 0.0f, 1.0f)));
    ++loop_->requests;
    if (pa_operation* op = pa_context_set_sink_input_volume(loop_->context, index, &volume, nullptr, nullptr))
        pa_operation_unref(op);
}

std::optional<QStringList> PulseClient::deviceDescriptions() const
{
    struct Query {
        pa_threaded_mainloop* mainloop;
        QStringList names;
    };
    LoopLock lock(loop_->mainloop);
    if (!loop_->ready || pa_threaded_mainloop_in_thread(loop_->mainloop))
        return std::nullopt;
    Query query{loop_->mainloop, {}};
    loop_->requests += 2;
    pa_operation* sinks = pa_context_get_sink_info_list(
        loop_->context,
        [](pa_context*, const pa_sink_info* info, int eol, void* data) {
            auto* q = static_cast<Query*>(data);
            if (eol == 0 && info->description && *info->description)
                q->names.append(QString::fromUtf8(info->description));
            pa_threaded_mainloop_signal(q->mainloop, 0);
        },
        &query);
    pa_operation* sources = pa_context_get_source_info_list(
        loop_->context,
        [](pa_context*, const pa_source_info* info, int eol, void* data) {
            auto* q = static_cast<Query*>(data);
            if (eol == 0 && info->monitor_of_sink == PA_INVALID_INDEX && info->description && *info->description)
                q->names.append(QString::fromUtf8(info->description));
            pa_threaded_mainloop_signal(q->mainloop, 0);
        },
        &query);
    const auto running = [](pa_operation* op) { return op && pa_operation_get_state(op) == PA_OPERATION_RUNNING; };
    while (loop_->ready && (running(sinks) || running(sources)))
        pa_threaded_mainloop_wait(loop_->mainloop);
    const bool answered = loop_->ready && sinks && sources;
    for (pa_operation* op : {sinks, sources}) {
        if (op) {
            pa_operation_cancel(op);
            pa_operation_unref(op);
        }
    }
    if (!answered)
        return std::nullopt;
    QStringList names = query.names;
    names.sort();
    names.removeDuplicates();
    return names;
}

quint64 PulseClient::requestCount() const
{
    return loop_->requests.load();
}

} // namespace tallowmere
