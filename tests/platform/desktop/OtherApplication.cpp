#include ZORVIK_PORT_HEADER

// Another application of the desktop: shows a window until it is ended.
int main() {
    const auto platform = zorvik::tests::Platform::make(
        {.applicationId = "other-application", .keepsSparePage = false});
    platform->openWindow("other application", {300, 300});
    platform->run();
}
