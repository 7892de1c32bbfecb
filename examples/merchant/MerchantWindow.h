#pragma once

#include <gtk/gtk.h>

#include <functional>
#include <string>
#include <vector>

#include "platform/foundation/Value.h"

namespace zorvik::demo {

struct BasketItem {
    std::string name;
    std::string detail;
    std::string amount;  // "1899.00"
};

// The shop's basket and, once a checkout has ended, what became of it. Main thread only.
class MerchantWindow {
  public:
    // `pay` is called for each press of the Pay button.
    MerchantWindow(const std::vector<BasketItem>& items, const std::string& total,
                   std::function<void()> pay);
    ~MerchantWindow();
    MerchantWindow(const MerchantWindow&) = delete;
    MerchantWindow& operator=(const MerchantWindow&) = delete;

    // The shop's window; nullptr once it was closed.
    GtkWindow* window() const { return window_; }

    void showBusy();
    void showProblem(const std::string& words);
    // The dictionary that the checkout handed to the shop.
    void showResult(const platform::Dictionary& data);

  private:
    void showBasket(const std::string& note, bool isBad);

    const std::vector<BasketItem> items_;
    const std::string total_;
    const std::function<void()> pay_;
    GtkWindow* window_ = nullptr;
    GtkWidget* column_ = nullptr;
    GtkWidget* payButton_ = nullptr;
};

}  // namespace zorvik::demo
