#pragma once

namespace zorvik::platform::desktop {

// What a page posts, or a script comes to, is written as JSON text. An object that holds another
// one in several places, and that one another, unfolds to a text without end; gaps of a list cost
// nothing until they are written. Beyond so many characters, about, the text is not written.
inline constexpr int longestText = 1 << 22;

// A function of script, of a value and the longest text: whether the text can be written within a
// moment.
inline constexpr char hasShortText[] = R"((value, limit) => {
    const open = [value];
    while (open.length > 0 && limit > 0) {
        const each = open[open.length - 1];
        --open.length;
        limit -= 16;
        if (typeof each === 'string') limit -= each.length;
        if (typeof each !== 'object' || each === null) continue;
        if (Array.isArray(each)) limit -= each.length;
        if (limit < 0) break;
        for (const key in each) {
            limit -= key.length;
            open[open.length] = each[key];
            if (open.length * 16 > limit) return false;
        }
    }
    return limit > 0;
})";

}  // namespace zorvik::platform::desktop
