#pragma once

namespace nebra {

// The kind of a tree node's folder, kept as the node's Data. The tree control
// stores it as a plain int; values outside 0..5 can occur (a node made by
// another program) and are kept as they are.
enum class FolderKind : int
{
    None = 0,               // the "Organiser" root
    ReadConfigurations = 1, // the instrument data of the selected driver
    Layouts = 2,
    Protocols = 3,
    Results = 4,
    Reports = 5,
};

// The kind stored in a node's Data.
constexpr FolderKind folderKindFromData(int data)
{
    return static_cast<FolderKind>(data);
}

constexpr int toData(FolderKind kind)
{
    return static_cast<int>(kind);
}

// The kinds that hold documents of a type: instrument data up to reports.
constexpr bool isDocumentFolder(FolderKind kind)
{
    return kind >= FolderKind::ReadConfigurations && kind <= FolderKind::Reports;
}

} // namespace nebra
