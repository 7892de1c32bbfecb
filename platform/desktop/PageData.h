#pragma once

namespace zorvik::platform::desktop {

// Where a host keeps what pages leave behind: cookies, stored entries, cached files.
enum class PageData {
    // In the user's folders, for the next run too; session cookies end with the platform. Cached
    // files come from disk.
    onDisk,
    // In memory, shared by all pages until the platform ends. Nothing is written.
    inMemory,
    // In memory, for one page alone: the next customer at a kiosk finds nothing. No page takes over
    // the web process of the one before it, so each loads as the first one does; the spare process
    // is started anew after each page.
    freshForEachPage,
};

}  // namespace zorvik::platform::desktop
