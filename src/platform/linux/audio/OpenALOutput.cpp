#include "platform/linux/audio/OpenALOutput.h"

#include "platform/linux/audio/SoundFile.h"

#include <QByteArray>
#include <QFile>
#include <QtGlobal>

#include <AL/al.h>
#include <AL/alc.h>
#include <AL/alext.h>
#include <dlfcn.h>

#include <algorithm>
#include <utility>

namespace kestrant {

namespace {

/// How often the ends of what plays are looked for.
constexpr Duration watchInterval = std::chrono::milliseconds(30);
/// How long the device goes on in silence. It mixes ahead and what it has mixed must be heard before it
/// rests.
constexpr Duration restDelay = std::chrono::seconds(1);

// NOLINTNEXTLINE(cert-dcl50-cpp): the signature is ALSA's
void ignoreComplaint(const char*, int, const char*, int, const char*, ...) {}

/// A machine without sound is nothing to complain of.
void silenceComplaints() {
    // ALSA is there where OpenAL was built with it.
    using SetHandler = int (*)(decltype(&ignoreComplaint));
    if (const auto set = reinterpret_cast<SetHandler>(dlsym(RTLD_DEFAULT, "snd_lib_error_set_handler")))
        set(ignoreComplaint);
}

ALenum formatOf(const PcmBuffer& buffer) {
    return buffer.channelCount == 1 ? AL_FORMAT_MONO16 : AL_FORMAT_STEREO16;
}

}  // namespace

/// An open device with its players.
class OpenALOutput::Device {
  public:
    /// Null when there is no device.
    static std::unique_ptr<Device> open() {
        ALCdevice* device = alcOpenDevice(nullptr);
        if (!device)
            return {};
        // Sounds without a place in space need no filters for the ears.
        const ALCint attributes[] = {ALC_HRTF_SOFT, ALC_FALSE, 0};
        ALCcontext* context = alcCreateContext(device, attributes);
        if (!context || !alcMakeContextCurrent(context)) {
            if (context)
                alcDestroyContext(context);
            alcCloseDevice(device);
            return {};
        }
        return std::unique_ptr<Device>(new Device(device, context));
    }

    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    ~Device() {
        for (const Player& player : players_)
            alDeleteSources(1, &player.source);
        alDeleteBuffers(static_cast<ALsizei>(buffers_.size()), buffers_.data());
        alcMakeContextCurrent(nullptr);
        alcDestroyContext(context_);
        alcCloseDevice(device_);
    }

    [[nodiscard]] bool isConnected() const {
        ALCint connected = ALC_TRUE;
        if (alcIsExtensionPresent(device_, "ALC_EXT_disconnect"))
            alcGetIntegerv(device_, ALC_CONNECTED, 1, &connected);
        return connected == ALC_TRUE;
    }

    [[nodiscard]] std::vector<PlayerNode> attach(const PcmBuffer& sound, int count) {
        alGetError();
        ALuint buffer = 0;
        alGenBuffers(1, &buffer);
        alBufferData(buffer, formatOf(sound), sound.samples.data(),
                     static_cast<ALsizei>(sound.samples.size() * sizeof(std::int16_t)), sound.sampleRate);
        if (alGetError() != AL_NO_ERROR)
            return {};
        buffers_.push_back(buffer);

        std::vector<PlayerNode> nodes;
        for (int index = 0; index < count; ++index) {
            ALuint source = 0;
            alGenSources(1, &source);
            if (alGetError() != AL_NO_ERROR)
                break;
            alSourcei(source, AL_BUFFER, static_cast<ALint>(buffer));
            alSourcei(source, AL_SOURCE_RELATIVE, AL_TRUE);
            players_.push_back({source, {}});
            nodes.push_back(static_cast<PlayerNode>(players_.size() - 1));
        }
        return nodes;
    }

    bool play(PlayerNode node, double volume, std::function<void()> completed) {
        Player& player = players_.at(static_cast<std::size_t>(node));
        alSourcef(player.source, AL_GAIN, static_cast<ALfloat>(volume));
        // Before the device goes on, so that the sound is in the first part it mixes.
        alSourcePlay(player.source);
        setResting(false);
        player.completed = std::move(completed);
        return isConnected();
    }

    [[nodiscard]] bool isPlaying() const {
        return std::any_of(players_.begin(), players_.end(),
                           [](const Player& player) { return bool(player.completed); });
    }

    /// Callbacks of sounds that have ended since.
    [[nodiscard]] std::vector<std::function<void()>> takeCompleted() {
        std::vector<std::function<void()>> completed;
        for (Player& player : players_) {
            ALint state = AL_STOPPED;
            if (player.completed)
                alGetSourcei(player.source, AL_SOURCE_STATE, &state);
            if (player.completed && state != AL_PLAYING)
                completed.push_back(std::exchange(player.completed, nullptr));
        }
        return completed;
    }

    void setResting(bool resting) {
        if (resting == isResting_ || !pause_ || !resume_)
            return;
        isResting_ = resting;
        (resting ? pause_ : resume_)(device_);
    }

  private:
    struct Player {
        ALuint source = 0;
        /// Set while it plays.
        std::function<void()> completed;
    };

    Device(ALCdevice* device, ALCcontext* context) : device_(device), context_(context) {
        if (!alcIsExtensionPresent(device, "ALC_SOFT_pause_device"))
            return;
        pause_ = reinterpret_cast<LPALCDEVICEPAUSESOFT>(alcGetProcAddress(device, "alcDevicePauseSOFT"));
        resume_ = reinterpret_cast<LPALCDEVICERESUMESOFT>(alcGetProcAddress(device, "alcDeviceResumeSOFT"));
    }

    ALCdevice* device_;
    ALCcontext* context_;
    LPALCDEVICEPAUSESOFT pause_ = nullptr;
    LPALCDEVICERESUMESOFT resume_ = nullptr;
    std::vector<ALuint> buffers_;
    std::vector<Player> players_;
    bool isResting_ = false;
};

OpenALOutput::OpenALOutput(Scheduler& queue) : queue_(queue) {
    silenceComplaints();
}

OpenALOutput::~OpenALOutput() = default;

std::optional<PcmBuffer> OpenALOutput::decode(const QByteArray& file) {
    return decodeSoundFile(file);
}

bool OpenALOutput::start() {
    watching_.cancel();
    resting_.cancel();
    // The device may be one that only one user can have.
    device_.reset();
    device_ = Device::open();
    if (device_)
        device_->setResting(true);
    return bool(device_);
}

std::vector<AudioOutput::PlayerNode> OpenALOutput::attach(const PcmBuffer& buffer, int count) {
    return device_ ? device_->attach(buffer, count) : std::vector<PlayerNode>();
}

bool OpenALOutput::play(PlayerNode player, double volume, std::function<void()> completed) {
    if (!device_ || !device_->play(player, volume, std::move(completed)))
        return false;
    resting_.cancel();
    if (!watching_.isPending())
        watching_ = queue_.every(watchInterval, [this] { watch(); });
    return true;
}

void OpenALOutput::observeConfiguration(std::function<void()> changed) {
    configurationChanged_ = std::move(changed);
}

void OpenALOutput::watch() {
    // A device that is gone ends what it plays.
    const bool isGone = !device_->isConnected();
    for (const auto& completed : device_->takeCompleted())
        completed();
    if (isGone) {
        watching_.cancel();
        if (configurationChanged_)
            configurationChanged_();
    } else if (!device_->isPlaying()) {
        watching_.cancel();
        resting_ = queue_.after(restDelay, [this] { device_->setResting(true); });
    }
}

}  // namespace kestrant
