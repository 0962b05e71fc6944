#include "cues/SoundFeedback.h"

#include <QFile>
#include <QLoggingCategory>

#include <algorithm>
#include <array>
#include <map>
#include <utility>
#include <vector>

namespace kestrant {

namespace {

Q_LOGGING_CATEGORY(soundLog, "kestrant.sound", QtWarningMsg)

constexpr std::array<const char*, 6> resourceNames{
    "UISFX-Zen-25-drag-start", "UISFX-Zen-23-expand", "UISFX-Zen-24-collapse",
    "UISFX-Zen-26-drop",       "UISFX-Zen-27-snap",   "UISFX-Zen-05-focus",
};

struct PlayerSlot {
    AudioOutput::PlayerNode node{};
    bool isBusy = false;
    /// Counts the slot's playbacks, so that the end of one is not taken for the end of a later one.
    unsigned playbackGeneration = 0;
};

struct PreparedCue {
    PcmBuffer buffer;
    std::vector<std::shared_ptr<PlayerSlot>> players;
};

}  // namespace

/// The part that lives on the queue's thread.
class SoundFeedback::Engine {
  public:
    Engine(std::unique_ptr<AudioOutput> output, const Clock& clock, QString soundFolder)
        : output_(std::move(output))
        , clock_(clock)
        , soundFolder_(std::move(soundFolder)) {}

    void prepare() {
        if (isPrepared_)
            return;
        for (std::size_t index = 0; index < resourceNames.size(); ++index)
            load(static_cast<Cue>(index));
        if (!preparedCues_.empty()) {
            output_->observeConfiguration([this] { rebuild(); });
            rebuild();
        }
        isPrepared_ = true;
    }

    void play(Cue cue, Instant requested) {
        const auto prepared = preparedCues_.find(cue);
        if (prepared == preparedCues_.end())
            return;
        if (!isRunning_ && isTimely(requested) && clock_.now() - lastStart_ >= deviceRetryInterval)
            rebuild();
        if (isRunning_ && !playIfTimely(cue, prepared->second, requested) && rebuild())
            playIfTimely(cue, prepared->second, requested);
    }

  private:
    void load(Cue cue) {
        QFile file(soundFolder_ + u'/' + resourceName(cue) + QStringLiteral(".mp3"));
        if (!file.open(QIODevice::ReadOnly))
            return;
        if (auto buffer = output_->decode(file.readAll()))
            preparedCues_[cue].buffer = std::move(*buffer);
    }

    /// Opens the device anew and gives every cue its players there. The slots stay, free; a playback that was
    /// under way has ended as far as they are concerned.
    bool rebuild() {
        lastStart_ = clock_.now();
        isRunning_ = output_->start();
        qCDebug(soundLog) << (isRunning_ ? "device open" : "no device");
        for (auto& [cue, prepared] : preparedCues_) {
            const auto nodes = isRunning_ ? output_->attach(prepared.buffer, playersPerCue)
                                          : std::vector<AudioOutput::PlayerNode>();
            prepared.players.resize(nodes.size());
            for (std::size_t index = 0; index < nodes.size(); ++index) {
                auto& slot = prepared.players[index];
                if (!slot)
                    slot = std::make_shared<PlayerSlot>();
                slot->node = nodes[index];
                slot->isBusy = false;
                ++slot->playbackGeneration;
            }
        }
        return isRunning_;
    }

    [[nodiscard]] bool isTimely(Instant requested) const { return clock_.now() - requested <= latestStart; }

    /// False when the device turned out to be gone.
    bool playIfTimely(Cue cue, PreparedCue& prepared, Instant requested) {
        const auto free = std::find_if(prepared.players.begin(), prepared.players.end(),
                                       [](const auto& slot) { return !slot->isBusy; });
        if (!isTimely(requested) || free == prepared.players.end()) {
            qCDebug(soundLog).noquote() << "dropped" << resourceName(cue);
            return true;
        }
        PlayerSlot& slot = **free;
        slot.isBusy = true;
        const unsigned generation = ++slot.playbackGeneration;
        return output_->play(slot.node, volume, [slot = std::weak_ptr(*free), generation] {
            if (const auto player = slot.lock(); player && player->playbackGeneration == generation)
                player->isBusy = false;
        });
    }

    std::unique_ptr<AudioOutput> output_;
    const Clock& clock_;
    const QString soundFolder_;
    std::map<Cue, PreparedCue> preparedCues_;
    bool isPrepared_ = false;
    bool isRunning_ = false;
    Instant lastStart_;
};

QString SoundFeedback::resourceName(Cue cue) {
    return QString::fromLatin1(resourceNames.at(static_cast<std::size_t>(cue)));
}

SoundFeedback::SoundFeedback(std::unique_ptr<AudioOutput> output, Scheduler& queue, const Clock& clock,
                             QString soundFolder)
    : queue_(queue)
    , clock_(clock)
    , engine_(std::make_shared<Engine>(std::move(output), clock, std::move(soundFolder))) {}

SoundFeedback::~SoundFeedback() {
    // The device is closed where it was opened.
    queue_.post([engine = std::move(engine_)] {});
}

void SoundFeedback::prepare() {
    queue_.post([engine = std::weak_ptr(engine_)] {
        if (const auto prepared = engine.lock())
            prepared->prepare();
    });
}

void SoundFeedback::play(Cue cue) {
    qCDebug(soundLog).noquote() << "asked for" << resourceName(cue);
    queue_.post([engine = std::weak_ptr(engine_), cue, requested = clock_.now()] {
        if (const auto playing = engine.lock())
            playing->play(cue, requested);
    });
}

}  // namespace kestrant
