// A descriptor that is closed when its owner goes. Never copied; one thread at a time.
#pragma once

#include <unistd.h>

namespace os::posix {

class Descriptor {
 public:
  // Takes over what an open call gave; -1 stands for none.
  explicit Descriptor(int descriptor = -1) : number(descriptor) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor(Descriptor&& other) noexcept : number(other.Release()) {}
  ~Descriptor() { Take(-1); }
  Descriptor& operator=(const Descriptor&) = delete;
  Descriptor& operator=(Descriptor&& other) noexcept {
    Take(other.Release());
    return *this;
  }

  bool IsOpen() const { return number >= 0; }
  int Number() const { return number; }
  // The caller closes it from now on.
  int Release() {
    const int released = number;
    number = -1;
    return released;
  }

 private:
  void Take(int descriptor) {
    if (number >= 0) close(number);
    number = descriptor;
  }

  int number;
};

}  // namespace os::posix
