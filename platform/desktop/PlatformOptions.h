#pragma once

#include <string>

#include "platform/desktop/PageData.h"
#include "platform/foundation/Geometry.h"

namespace zorvik::platform::desktop {

// How a desktop port is made.
struct PlatformOptions {
    // Names the application in the user's configuration folder: the defaults are kept in
    // $XDG_CONFIG_HOME/<applicationId>/defaults.json, the same file in every desktop port.
    std::string applicationId;
    UIEdgeInsets safeAreaInsets = {};  // what screens keep free at the edges, in points
    PageData pageData = PageData::inMemory;
    // Keeps one web process at hand for the next checkout, started ahead for the first one, so
    // that its page loads without waiting for it. It costs the memory of an idle page; turned off,
    // each checkout waits for a process of its own.
    bool keepsSparePage = true;
    // A page that leaves the customer's click or key unanswered for this long (seconds) counts as
    // hung: its web process is ended and the page has failed. More than a page may ever spend in
    // one piece of script, a wait for its server included.
    double hungPageSeconds = 20;
};

}  // namespace zorvik::platform::desktop
