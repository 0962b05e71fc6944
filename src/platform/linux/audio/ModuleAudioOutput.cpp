#include "platform/linux/audio/ModuleAudioOutput.h"

#include "foundation/Modules.h"

#include <QFile>
#include <QLibrary>

#include <sys/mman.h>
#include <unistd.h>

#include <utility>

namespace kestrant {

namespace {

using MakeOutput = AudioOutput* (*)(Scheduler&);

// The sound is mixed in small parts, because a sound that begins waits for those that are mixed already: with
// the library's own 64 ms cues were heard up to 40 ms late, with these 20 ms not after 15. A value that
// somebody has set in the library's files for all programs gives way; ALSOFT_CONF, set for this one, does
// not.
constexpr char mixing[] = "[general]\nperiod_size = 256\nperiods = 4\n";

constexpr char configurationVariable[] = "ALSOFT_CONF";
constexpr char verbosityVariable[] = "ALSOFT_LOGLEVEL";

void chooseMixing() {
    if (QFile::exists(qEnvironmentVariable(configurationVariable)))
        return;
    // The library reads its settings from files only. This one is in memory and there as long as the process.
    const int file = memfd_create("openal-settings", MFD_CLOEXEC);
    if (file < 0)
        return;
    if (write(file, mixing, sizeof mixing - 1) == ssize_t{sizeof mixing - 1})
        qputenv(configurationVariable,
                "/proc/" + QByteArray::number(getpid()) + "/fd/" + QByteArray::number(file));
    else
        close(file);
}

}  // namespace

ModuleAudioOutput::ModuleAudioOutput(Scheduler& queue) : queue_(queue) {
    chooseMixing();
    // A machine without sound is nothing to complain of.
    if (!qEnvironmentVariableIsSet(verbosityVariable))
        qputenv(verbosityVariable, "0");
}

AudioOutput* ModuleAudioOutput::output() {
    if (!std::exchange(wasLoaded_, true)) {
        if (const auto file = moduleFile(QStringLiteral("kestrant_audio.so"))) {
            QLibrary library(*file);
            if (const auto make = reinterpret_cast<MakeOutput>(library.resolve("kestrantMakeAudioOutput")))
                output_.reset(make(queue_));
        }
    }
    return output_.get();
}

std::optional<PcmBuffer> ModuleAudioOutput::decode(const QByteArray& file) {
    return output() ? output_->decode(file) : std::nullopt;
}

bool ModuleAudioOutput::start() {
    return output() && output_->start();
}

std::vector<AudioOutput::PlayerNode> ModuleAudioOutput::attach(const PcmBuffer& buffer, int count) {
    return output() ? output_->attach(buffer, count) : std::vector<PlayerNode>();
}

bool ModuleAudioOutput::play(PlayerNode player, double volume, std::function<void()> completed) {
    return output() && output_->play(player, volume, std::move(completed));
}

void ModuleAudioOutput::observeConfiguration(std::function<void()> changed) {
    if (output())
        output_->observeConfiguration(std::move(changed));
}

}  // namespace kestrant
