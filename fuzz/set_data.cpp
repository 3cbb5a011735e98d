// Any items as management data: the items that reach the platform, and those that are refused, follow the rules.
#include "ServiceUnderFuzz.h"
#include "platform/management/ManageableData.h"
#include "tests/model/Rules.h"

namespace {
constexpr char const* kKnownKeys[] = {"call-dnd-activated", "cfu-activated",   "cfu-address",          "cfb-activated",
                                      "cfb-address",        "cfnr-activated",  "cfnr-address",         "cfnr-delay",
                                      "cfu-ext-address",    "cfb-int-address", "server-based-features"};

Rules::Items readItems(FuzzInput& input)
{
    Rules::Items items;
    while (!input.isEmpty()) {
        int const which = input.below(16);
        auto const key = which < 11 ? std::string(kKnownKeys[which]) : input.text();
        auto const value = input.flag() ? std::string("false") : input.text();
        bool const isNew =
            std::none_of(items.begin(), items.end(), [&](auto const& item) { return item.first == key; });
        if (isNew) {
            items.emplace_back(key, value);
        }
    }
    return items;
}

// Only the part of a key that a log line or an effect can show.
std::string printable(std::string key)
{
    return key.c_str();
}
}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static ServiceUnderFuzz subject;
    FuzzInput input(data, size);
    subject.begin(input);
    auto const items = readItems(input);
    ManageableData handed;
    for (auto const& [key, value] : items) {
        DataNode node;
        auto copy = value;
        node.setValue(copy);
        handed.setRootId(key, nullptr);
        handed.populate(key, node);
    }

    Kept const kept{subject.context.registered, true, 0};
    Rules rules(subject.world, kept);
    bool refused = false;
    auto const left = rules.filtered(items, refused);
    subject.world.applyAnswer = 7;
    int const answer = subject.service.setData(handed);

    require(answer == (refused ? 0 : 7), "the answer");
    DxlCollection ids;
    handed.getRootIds(ids);
    require(ids.size() == left.size(), "the number of items that are left");
    for (std::size_t row = 0; row < ids.size(); ++row) {
        requireEqual(printable(ids.value(row, ManageableData::kRootId)), printable(left[row].first), "an item");
    }
    bool const applied = !subject.world.effects.empty() && subject.world.effects.back().compare(0, 6, "apply(") == 0;
    require(applied == !refused, "whether anything was applied");
    subject.check();
    return 0;
}
