#include "platform/linux/audio/OpenALOutput.h"

extern "C" Q_DECL_EXPORT kestrant::AudioOutput* kestrantMakeAudioOutput(kestrant::Scheduler& queue) {
    return new kestrant::OpenALOutput(queue);
}
