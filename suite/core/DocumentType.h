#pragma once

namespace nebra {

// The type of the documents a tree node's folder holds, kept as the node's
// Data. Every node below a top-level branch has its branch's type; the root
// and nodes outside the document folders have None. The tree control stores
// it as a plain int, so values outside 0..5 can occur (a node made by another
// program) and are kept as they are: DocumentTypes says what each means.
enum class DocumentType : int
{
    None = 0, // the "Organiser" root
    ReadConfigurations = 1,
    Layouts = 2,
    Protocols = 3,
    Results = 4,
    Reports = 5,
};

// The type stored in a node's Data.
constexpr DocumentType documentTypeFromData(int data)
{
    return static_cast<DocumentType>(data);
}

constexpr int toData(DocumentType type)
{
    return static_cast<int>(type);
}

} // namespace nebra
