#define LOG_TAG "TagIterator"

#include "tuning/TagIterator.h"

#include <libxml/parser.h>
#include <log/log.h>

#include <cerrno>

#include "tuning/NodeParseUtils.h"

namespace vessa {

namespace {

// The numbers printed with the failures of init.
constexpr int kEmptyPathCode = 40;
constexpr int kReadFileCode = 46;
constexpr int kNoRootCode = 52;

// The attribute's value through libxml2 (entities resolved); empty when it has none.
std::string attributeValue(xmlNodePtr node, xmlAttrPtr attr) {
    xmlChar* raw = xmlGetProp(node, attr->name);
    std::string value = raw ? reinterpret_cast<const char*>(raw) : "";
    xmlFree(raw);
    return value;
}

}  // namespace

TagIterator::TagIterator() : mDoc(nullptr), mRoot(nullptr), mCurrent(nullptr) {}

TagIterator::~TagIterator() {
    clearAll();
}

int TagIterator::init(const std::string& path) {
    if (path.empty()) {
        ALOGE("Invalide xml file path, %d", kEmptyPathCode);
        return -EINVAL;
    }
    // A second init would otherwise leak the first document.
    freeDocument();
    mDoc = xmlReadFile(path.c_str(), nullptr, 0);
    if (mDoc == nullptr) {
        ALOGE("fail to call xmlReadFile,  %d", kReadFileCode);
        return -EINVAL;
    }
    mRoot = xmlDocGetRootElement(mDoc);
    if (mRoot == nullptr) {
        ALOGE("fail to call xmlDocGetRootElement, %d", kNoRootCode);
        return -ENODEV;
    }
    mCurrent = mRoot->children;
    return 0;
}

void TagIterator::next() {
    if (mCurrent != nullptr) mCurrent = mCurrent->next;
}

void TagIterator::childrenNext() {
    if (mCurrent != nullptr && mCurrent->children != nullptr) mCurrent = mCurrent->children->next;
}

bool TagIterator::isChildrenValid() const {
    return mCurrent != nullptr && mCurrent->children != nullptr;
}

bool TagIterator::isNextValid() const {
    return mCurrent != nullptr && mCurrent->next != nullptr;
}

bool TagIterator::isCurValid() const {
    return mCurrent != nullptr;
}

bool TagIterator::isElementNode() const {
    return mCurrent != nullptr && mCurrent->type == XML_ELEMENT_NODE;
}

void TagIterator::pushNode() {
    mNodeStack.push_back(mCurrent);
}

void TagIterator::popNode() {
    if (mNodeStack.empty()) {
        ALOGE("It's empty in node stack!");
        return;
    }
    mCurrent = mNodeStack.back();
    mNodeStack.pop_back();
}

std::string TagIterator::getNodeName() const {
    if (mCurrent == nullptr || mCurrent->name == nullptr) return std::string();
    return reinterpret_cast<const char*>(mCurrent->name);
}

void TagIterator::parseNodeIntVector(std::vector<int>& out) const {
    if (!isReadableElement()) return;
    for (xmlAttrPtr attr = mCurrent->properties; attr != nullptr; attr = attr->next) {
        out.push_back(string2Int(attributeValue(mCurrent, attr)));
    }
}

void TagIterator::parseNodeAll(std::vector<std::string>& out) const {
    static const std::vector<std::string> kNoNames;
    parseNodeWithName(kNoNames, out);
}

void TagIterator::parseNodeWithName(const std::vector<std::string>& names,
                                    std::vector<std::string>& out) const {
    if (!isReadableElement()) return;
    if (!names.empty()) out.resize(names.size());
    for (xmlAttrPtr attr = mCurrent->properties; attr != nullptr; attr = attr->next) {
        std::string value = attributeValue(mCurrent, attr);
        if (names.empty()) {
            out.push_back(std::move(value));
            continue;
        }
        // The value goes to the first slot naming the attribute; a repeated
        // name gets an empty text.
        bool stored = false;
        for (size_t i = 0; i < names.size(); ++i) {
            if (names[i] != reinterpret_cast<const char*>(attr->name)) continue;
            if (stored) {
                out[i].clear();
            } else {
                out[i] = std::move(value);
                stored = true;
            }
        }
    }
}

void TagIterator::clearAll() {
    freeDocument();
    xmlCleanupParser();
}

bool TagIterator::isReadableElement() const {
    if (mCurrent == nullptr) {
        ALOGE("Invalid node when parsing String vector.");
        return false;
    }
    return mCurrent->type == XML_ELEMENT_NODE;
}

void TagIterator::freeDocument() {
    if (mDoc != nullptr) xmlFreeDoc(mDoc);
    mDoc = nullptr;
    mRoot = nullptr;
    mCurrent = nullptr;
}

}  // namespace vessa
