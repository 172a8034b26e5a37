#pragma once

namespace slatewise::test {

/// Takes away what tests that were killed have left: what is mounted below their scratch folders,
/// the devices of their images, and the folders. Those of tests that run stay.
void removeLeftovers();

} // namespace slatewise::test
