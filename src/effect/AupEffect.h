#pragma once

#include <utils/String16.h>

#include <vector>

namespace vessa {

// The program's handle on the audio effect. It does not drive an effect
// instance: it writes parameter batches into the shared parameter store, from
// which the effect in the audio path takes them. It is always present and
// always controllable; switching the effect on and off goes by parameter values.
class AupEffect {
  public:
    // Both arguments are accepted for the platform's effect signature and unused.
    AupEffect(int sessionId, android::String16 name);

    // Writes the batch into the store. Returns -22 whatever happened: callers
    // pass the value on and nobody tests it.
    int send(int command, std::vector<int>& buffer);
    // Validates the batch; stores every entry in order and commits once, or
    // logs an error and stores nothing.
    void sendSharedStore(void* data, unsigned int size);
    // Reads nothing; `out` is left as it is.
    int receive(int command, std::vector<int>& out);
    bool hasControl() const { return true; }
    int setEnabled(bool enabled);
};

}  // namespace vessa
