#define LOG_TAG "ClientDeathWatch"

#include "dbus/ClientDeathWatch.h"

#include <log/log.h>
#include <sdbus-c++/Error.h>
#include <sdbus-c++/Message.h>

#include "dbus/PqsCallbacksProxy.h"

namespace vessa {

namespace {

constexpr const char* kNameOwnerChanged =
        "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',"
        "interface='org.freedesktop.DBus',member='NameOwnerChanged'";

}  // namespace

ClientDeathWatch::ClientDeathWatch(sdbus::IConnection& connection) : mConnection(connection) {}

ClientDeathWatch::~ClientDeathWatch() = default;

bool ClientDeathWatch::start(std::string* error) {
    try {
        mSubscription = mConnection.addMatch(kNameOwnerChanged, [this](sdbus::Message& signal) {
            try {
                std::string name, oldOwner, newOwner;
                signal >> name >> oldOwner >> newOwner;
                // Clients are known by their unique names (":1.42"), which never come back.
                if (!name.empty() && name[0] == ':' && newOwner.empty()) clientVanished(name);
            } catch (const std::exception& e) {
                // A malformed signal or a failing recipient must not end the bus thread.
                ALOGE("NameOwnerChanged: %s", e.what());
            }
        });
        return true;
    } catch (const sdbus::Error& e) {
        if (error != nullptr) *error = "cannot watch clients: " + e.getMessage();
        return false;
    }
}

void ClientDeathWatch::stop() {
    mSubscription.reset();
}

void ClientDeathWatch::link(const std::string& client,
                            const android::sp<android::PqsDeathRecipient>& recipient,
                            uint64_t cookie, const android::wp<PqsCallbacksProxy>& who) {
    std::lock_guard<std::mutex> guard(mLock);
    mLinks[client].push_back(Link{recipient, cookie, who});
}

bool ClientDeathWatch::unlink(const std::string& client,
                              const android::sp<android::PqsDeathRecipient>& recipient) {
    std::lock_guard<std::mutex> guard(mLock);
    auto it = mLinks.find(client);
    if (it == mLinks.end()) return false;
    std::vector<Link>& links = it->second;
    for (auto link = links.begin(); link != links.end(); ++link) {
        if (link->recipient == recipient) {
            links.erase(link);
            if (links.empty()) mLinks.erase(it);
            return true;
        }
    }
    return false;
}

size_t ClientDeathWatch::linkCount(const std::string& client) {
    std::lock_guard<std::mutex> guard(mLock);
    auto it = mLinks.find(client);
    return it == mLinks.end() ? 0 : it->second.size();
}

void ClientDeathWatch::clientVanished(const std::string& client) {
    std::vector<Link> links;
    {
        std::lock_guard<std::mutex> guard(mLock);
        auto it = mLinks.find(client);
        if (it == mLinks.end()) return;
        links.swap(it->second);
        mLinks.erase(it);
    }
    ALOGI("client %s left the bus (%zu links)", client.c_str(), links.size());
    for (const Link& link : links) {
        android::sp<PqsCallbacksProxy> who = link.who.promote();
        if (who != nullptr) who->markGone();
        android::sp<android::PqsDeathRecipient> recipient = link.recipient.promote();
        if (recipient != nullptr) recipient->serviceDied(link.cookie, link.who);
    }
}

}  // namespace vessa
