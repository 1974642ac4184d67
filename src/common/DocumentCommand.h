#pragma once

namespace nebra {

// The document commands of the tree's buttons and the tool bar. The numbers
// are the keys of the tree's buttons, so a button click names its command.
enum class DocumentCommand : int
{
    New = 605,
    Open = 606,
    Run = 607,
    Help = 608,
};

constexpr int buttonKey(DocumentCommand command)
{
    return static_cast<int>(command);
}

} // namespace nebra
