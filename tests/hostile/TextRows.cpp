#include "tests/hostile/HostileCheckout.h"

namespace zorvik::tests {

std::vector<Row> textRows() {
    return {};
}

}  // namespace zorvik::tests
