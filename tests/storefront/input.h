// The mouse and the keyboard, as the system gets them from a person: what is under the pointer is clicked, what has the
// focus gets the keys. One thread at a time.
#pragma once

#include <windows.h>

#include <string>

namespace storefront_test {

// Moves the pointer to a point of the screen and presses the left button once.
void ClickAt(POINT point);

// Presses a key, with another one held down when `held` is not 0.
void PressKey(WORD key, WORD held = 0);

// Types characters that the keyboard has.
void Type(const std::string& text);

}  // namespace storefront_test
