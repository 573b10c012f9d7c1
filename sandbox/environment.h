// What the server takes from the machine: the time that sessions age by, and randomness. Tests put their own in.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace sandbox {

using Time = std::chrono::steady_clock::time_point;

struct Environment {
  std::function<Time()> now;
  std::function<std::string(std::size_t)> randomBytes;

  /// Returns the machine's steady clock and the operating system's random generator.
  static Environment OfMachine();

  /// Returns the machine's steady clock and bytes that the seed determines: the same in every run, and for everybody to
  /// guess.
  static Environment Seeded(std::uint64_t seed);
};

}  // namespace sandbox
