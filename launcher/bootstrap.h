// What the platform layer calls.
#pragma once

#include <string>

// Makes path the document that the runtime is told to open, in place of any earlier one.
void SetFileToOpen(std::string path);
