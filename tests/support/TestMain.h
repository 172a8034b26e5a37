#pragma once

namespace slatewise::test {

/// What holds for every test, ahead of the application object.
void prepareTests(int* argc, char** argv);

} // namespace slatewise::test
