#pragma once

#include <libxml/tree.h>

#include <deque>
#include <string>
#include <vector>

namespace vessa {

// The one cursor through which a tuning file is read: owns the parsed document,
// a current node and a stack of saved positions. Values live in attributes only.
// The moves are built for indented XML, where whitespace text sits between
// elements: see childrenNext.
class TagIterator {
  public:
    TagIterator();
    virtual ~TagIterator();
    TagIterator(const TagIterator&) = delete;
    TagIterator& operator=(const TagIterator&) = delete;

    // Parses the file and stands on the root element's first child node.
    // 0, -22 (empty path, unreadable or malformed file) or -19 (no root element).
    virtual int init(const std::string& path);
    // To the next sibling (possibly none).
    virtual void next();
    // To the first child's next sibling: skips the whitespace before the first
    // child element. Does not move when there is no child.
    virtual void childrenNext();
    virtual bool isChildrenValid() const;
    virtual bool isNextValid() const;
    virtual bool isCurValid() const;
    virtual bool isElementNode() const;
    virtual void pushNode();
    // Restores the last pushed position; logs and stays put when none is saved.
    virtual void popNode();
    virtual std::string getNodeName() const;
    // Every attribute value of the current element as an integer, appended in order.
    virtual void parseNodeIntVector(std::vector<int>& out) const;
    // Every attribute value of the current element as text, appended in order.
    virtual void parseNodeAll(std::vector<std::string>& out) const;
    // With names: out becomes one entry per name, holding that attribute's value
    // or an empty text. Without names: as parseNodeAll.
    virtual void parseNodeWithName(const std::vector<std::string>& names,
                                   std::vector<std::string>& out) const;

    // Frees the document and libxml2's global state; the stack is kept.
    void clearAll();

  private:
    // False (after logging when there is no node at all) unless attributes may be read.
    bool isReadableElement() const;
    void freeDocument();

    xmlDocPtr mDoc;
    xmlNodePtr mRoot;
    xmlNodePtr mCurrent;
    std::deque<xmlNodePtr> mNodeStack;
};

}  // namespace vessa
