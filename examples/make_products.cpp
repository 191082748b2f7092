// Writes the example popup examples/Products (.ZPT and .ZPD): a product
// catalogue of departments, categories and products with a description and
// a unit price, saved through the normal save path.
//
// usage: make-example-products FOLDER
#include <cstdio>
#include <string>
#include <vector>

#include "zephyr/runtime/popup_class.h"
#include "zephyr/runtime/popup_key.h"
#include "zephyr/support/errors.h"

namespace {

struct Product {
  const char* name;
  const char* price;
};
struct Category {
  const char* name;
  std::vector<Product> products;
};
struct Department {
  const char* name;
  std::vector<Category> categories;
};

const std::vector<Department> kCatalogue = {
    {"Fresh Produce",
     {{"Fruit",
       {{"Apples, Braeburn (1 kg)", "2.49"},
        {"Bananas (bunch of 5)", "1.19"},
        {"Oranges, Navel (1 kg)", "2.29"},
        {"Strawberries (400 g)", "3.50"}}},
      {"Vegetables",
       {{"Carrots (1 kg)", "0.89"},
        {"Broccoli (head)", "1.09"},
        {"Potatoes, Maris Piper (2.5 kg)", "2.75"}}}}},
    {"Bakery",
     {{"Bread", {{"Sourdough loaf (800 g)", "3.20"}, {"Wholemeal sliced (800 g)", "1.45"}}},
      {"Pastries",
       {{"Croissants (pack of 4)", "2.10"},
        {"Pain au chocolat (pack of 4)", "2.40"},
        {"Cinnamon swirls (pack of 2)", "1.90"}}}}},
    {"Dairy",
     {{"Milk",
       {{"Whole milk (2 l)", "1.55"},
        {"Semi-skimmed milk (2 l)", "1.45"},
        {"Oat drink (1 l)", "1.80"}}},
      {"Cheese",
       {{"Mature cheddar (400 g)", "3.75"},
        {"Brie (200 g)", "2.60"},
        {"Mozzarella (125 g)", "0.95"}}}}},
    {"Household",
     {{"Cleaning", {{"Washing-up liquid (450 ml)", "1.25"}, {"Surface spray (750 ml)", "2.00"}}},
      {"Paper", {{"Kitchen roll (2 rolls)", "2.30"}, {"Toilet tissue (9 rolls)", "4.50"}}}}},
};

// Two-digit codes in steps of ten leave room for items added later.
std::string Code(size_t position) {
  char code[3];
  std::snprintf(code, sizeof code, "%02zu", (position + 1) * 10);
  return code;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: make-example-products FOLDER\n", stderr);
    return 2;
  }
  try {
    zephyr::PopupClass popup;
    popup.PopupPath(argv[1]);
    popup.DataSource("Products");
    popup.Title("Product Catalogue");
    popup.Levels(3);
    int32_t level = 1;
    for (const char* question : {"Department", "Category", "Product"}) {
      popup.PopupLevels()->Add(zephyr::Variant(question), level++);
    }
    auto fields = popup.PopupFields();
    fields->Add("Popup Code", 6, 0, 0);
    fields->Add("Description", 40, 1, 0);
    fields->Add("Unit Price", 10, 2, 0);

    std::vector<std::shared_ptr<zephyr::PopupItem>> in_order;
    auto add = [&](zephyr::PopupItems& siblings, const std::string& path, const char* name,
                   const char* price) {
      auto item = siblings.Add(zephyr::FormatStoredKey(path, 3));
      item->PopupValues()->Add(name);
      item->PopupValues()->Add(price);
      in_order.push_back(item);
      return item;
    };
    for (size_t d = 0; d < kCatalogue.size(); ++d) {
      const auto& department = kCatalogue[d];
      std::string d_path = Code(d);
      auto d_item = add(*popup.PopupItems(), d_path, department.name, "");
      for (size_t c = 0; c < department.categories.size(); ++c) {
        const auto& category = department.categories[c];
        std::string c_path = d_path + Code(c);
        auto c_item = add(*d_item->Children(), c_path, category.name, "");
        c_item->Parent(d_item);
        for (size_t p = 0; p < category.products.size(); ++p) {
          const auto& product = category.products[p];
          auto p_item = add(*c_item->Children(), c_path + Code(p), product.name, product.price);
          p_item->Parent(c_item);
        }
      }
    }
    popup.WriteTemplate();
    popup.SavePopup();
    for (const auto& item : in_order) popup.WritePopupRecord(item);
    popup.SaveClose();
    std::printf("wrote %zu items to %s/Products\n", in_order.size(), argv[1]);
  } catch (const zephyr::Error& error) {
    std::fprintf(stderr, "make-example-products: %s\n", error.Description().c_str());
    return 1;
  }
  return 0;
}
