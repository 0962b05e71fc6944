#pragma once

namespace kestrant::test {

/// Gives a test program the surroundings that its tests count on: no display, Paris as the zone, a locale
/// that every machine has. To be called first in main().
void useTestEnvironment();

}  // namespace kestrant::test
