#pragma once

namespace slatewise::Verify {

struct ListedTree;

/// The disk of another system may have names in another Unicode form than the lists. What they say
/// of such a name is of the file or folder that has it there, whose bytes tell whether it is the
/// same. To come after all lists.
void meetOtherForms(ListedTree& tree);

} // namespace slatewise::Verify
