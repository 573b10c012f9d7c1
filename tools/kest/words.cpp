#include "words.h"

#include <iostream>
#include <sstream>

#include "card.h"
#include "text.h"

namespace kest_host {

void Say(const std::string& lines) {
  SayWithNumbers(HideCards(lines));
}

void SayWithNumbers(const std::string& lines) {
  std::istringstream stream(lines);
  for (std::string line; std::getline(stream, line);) std::cerr << "kest: " << ForTerminal(line) << '\n';
}

}  // namespace kest_host
