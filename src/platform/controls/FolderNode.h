#pragma once

#include <QString>

namespace nebra {

class FolderTreeModel;

// A node of the folder tree, as the Organiser sees it: a small handle that
// reads and writes the node's attributes in the tree's node collection. A
// handle stays safe after its node was removed: isValid() turns false and
// every getter answers its empty value, every setter does nothing.
class FolderNode
{
public:
    FolderNode() = default;

    bool isValid() const;

    // Caption shown in the tree.
    QString text() const;
    void setText(const QString& text) const;
    // Full path of the folder, without a trailing separator ("Organiser" on the root).
    QString folderPath() const;
    void setFolderPath(const QString& path) const;
    // The document type of the node's folder (DocumentType), as an int.
    int data() const;
    void setData(int value) const;
    // Depth: 0 for a node at the top level.
    int level() const;
    // Document shown for the node.
    QString page() const;
    void setPage(const QString& page) const;
    // Display flag A: the node is shown expanded (the user's expanding and
    // collapsing changes it too).
    bool displayFlagA() const;
    void setDisplayFlagA(bool on) const;
    // Display flag B: the caption is shown in bold.
    bool displayFlagB() const;
    void setDisplayFlagB(bool on) const;
    // Display style: the node's picture; 7 a home folder, any other value a folder.
    int displayStyle() const;
    void setDisplayStyle(int style) const;
    // Caption colour, 0xAARRGGBB; 0 leaves the view's own text colour.
    quint32 colour() const;
    void setColour(quint32 colour) const;

    FolderNode parent() const;
    int childCount() const;
    FolderNode firstChild() const;
    FolderNode child(int index) const; // zero-based

    bool operator==(const FolderNode& other) const = default;

private:
    friend class FolderTreeModel;
    FolderNode(const FolderTreeModel* model, qint32 slot, quint32 generation)
        : m_model(const_cast<FolderTreeModel*>(model)), m_slot(slot), m_generation(generation)
    {
    }

    FolderTreeModel* m_model = nullptr;
    qint32 m_slot = -1;
    quint32 m_generation = 0;
};

} // namespace nebra
