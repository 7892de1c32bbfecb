#pragma once

// Marks what the shared libraries make visible: the public interface and nothing else.
#define ZORVIK_API __attribute__((visibility("default")))
