#include "platform/AHandler.h"

namespace android {

AHandler::AHandler() : mId(0) {}

ALooper::handler_id AHandler::id() const {
    Mutex::Autolock lock(mLock);
    return mId;
}

sp<ALooper> AHandler::looper() const {
    Mutex::Autolock lock(mLock);
    return mLooper.promote();
}

bool AHandler::attach(ALooper::handler_id id, const wp<ALooper>& looper) {
    Mutex::Autolock lock(mLock);
    if (mId != 0) return false;
    mId = id;
    mLooper = looper;
    return true;
}

void AHandler::detach() {
    Mutex::Autolock lock(mLock);
    mId = 0;
    mLooper.clear();
}

}  // namespace android
