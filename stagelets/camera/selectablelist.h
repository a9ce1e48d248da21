#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace Plugin::NivexStageletPackageBase {

/// A list of which one item is selected, as a selector parameter shows it. The selection is an index that always
/// lies within the list, or 0 while the list is empty. For one thread at a time.
template <typename Item>
class SelectableList
{
public:
    const std::vector<Item>& items() const { return items_; }
    /// The selector's greatest value.
    std::int64_t maxIndex() const { return items_.empty() ? 0 : static_cast<std::int64_t>(items_.size()) - 1; }
    std::size_t index() const { return index_; }
    /// Null while the list is empty.
    const Item* selected() const { return items_.empty() ? nullptr : &items_[index_]; }
    Item* selected() { return items_.empty() ? nullptr : &items_[index_]; }

    /// An index beyond the list selects the last item.
    void select(std::size_t index) { index_ = std::min(index, static_cast<std::size_t>(maxIndex())); }
    /// Appends and selects.
    void add(Item item)
    {
        items_.push_back(std::move(item));
        index_ = items_.size() - 1;
    }
    /// Removes the selected item, if any, and selects the one behind it.
    void remove()
    {
        if (items_.empty()) return;
        items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(index_));
        select(index_);
    }
    /// The index stays, as far as the new list reaches.
    void assign(std::vector<Item> items)
    {
        items_ = std::move(items);
        select(index_);
    }

    friend bool operator==(const SelectableList&, const SelectableList&) = default;

private:
    std::vector<Item> items_;
    std::size_t index_ = 0;
};

}  // namespace Plugin::NivexStageletPackageBase
