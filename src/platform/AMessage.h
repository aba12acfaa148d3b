#pragma once

#include <stdint.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>

#include <string>
#include <vector>

#include "platform/ALooper.h"

namespace android {

class ABuffer;
class AHandler;

// A message for one handler: a "what" code and named values. Posting queues the
// message object itself, not a copy: the poster must not change it afterwards, and
// bytes that must outlive the poster's memory go in a buffer made by
// ABuffer::CreateAsCopy.
class AMessage : public RefBase {
  public:
    AMessage();
    AMessage(uint32_t what, const sp<const AHandler>& handler);

    void setWhat(uint32_t what) { mWhat = what; }
    uint32_t what() const { return mWhat; }

    // Addresses the handler as it is registered now; a null or unregistered handler
    // leaves the message without a target, so posting it fails.
    void setTarget(const sp<const AHandler>& handler);
    ALooper::handler_id target() const { return mTarget; }

    // Setting a name again replaces its value, whatever its earlier type.
    void setInt32(const char* name, int32_t value);
    void setBuffer(const char* name, const sp<ABuffer>& buffer);
    // False, output untouched, when the name is missing or holds another type.
    bool findInt32(const char* name, int32_t* value) const;
    bool findBuffer(const char* name, sp<ABuffer>* buffer) const;
    // Removes every value; the what and the target stay. The room the values took is
    // kept, so a message refilled with the same names allocates nothing.
    void clear();

    // Queues the message on the target's looper, due after delayUs. -ENOENT when the
    // looper is gone or the handler is not registered with it.
    status_t post(int64_t delayUs = 0);

  private:
    enum class Type { kInt32, kBuffer };
    struct Item {
        std::string name;
        Type type;
        int32_t int32Value;
        sp<ABuffer> buffer;
    };

    const Item* findItem(const char* name, Type type) const;
    Item& itemFor(const char* name, Type type);

    uint32_t mWhat;
    ALooper::handler_id mTarget;
    wp<ALooper> mLooper;
    std::vector<Item> mItems;
};

}  // namespace android
