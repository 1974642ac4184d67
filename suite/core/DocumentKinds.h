#pragma once

#include "DocumentType.h"
#include "SuitePaths.h"

#include <array>
#include <span>

namespace nebra {

// One kind of the suite's documents as every program of the suite knows it:
// the data folder it lives in (at any depth), the pattern of its file names
// ("*.apr"; "*" for every file), the name of the kind, and whether its
// history is kept in the audit trail while security is on. The Organiser's
// document type table builds on it, and the security tools find documents by it.
struct DocumentKind
{
    DocumentType type = DocumentType::None;
    QString (SuitePaths::*folder)() const = nullptr;
    const char* pattern = "*";
    const char* typeName = "";
    bool recorded = false;
};

// The five kinds, in the order of their types.
// clang-format off
inline constexpr std::array<DocumentKind, 5> DocumentKindTable{{
    {DocumentType::ReadConfigurations, &SuitePaths::ReadConfigurationsFolder, "*.daq", "Data Acquisition", true},
    {DocumentType::Layouts, &SuitePaths::LayoutsFolder, "*.mlo", "Layout", true},
    {DocumentType::Protocols, &SuitePaths::ProtocolsFolder, "*.apr", "Assay Protocol", true},
    {DocumentType::Results, &SuitePaths::ResultsFolder, "*.ars", "Assay Results", true},
    {DocumentType::Reports, &SuitePaths::ReportsFolder, "*", "Assay Report", true},
}};
// clang-format on

class DocumentKinds
{
public:
    static std::span<const DocumentKind> all() { return DocumentKindTable; }
    // The kind of a type; the root (None) is no kind of document.
    static constexpr const DocumentKind& of(DocumentType type) { return DocumentKindTable[toData(type) - 1]; }
};

} // namespace nebra
