// The description table: which children a structure has, by key.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "frameutil/codec.h"

namespace FrameUtil {

class DescTable {
  public:
    DescTable() = default;

    /// Reads `file`, once; the table is immutable from then on. Not a regular file, or one
    /// that cannot be read: `report` has the reason, the table stays empty.
    void Load(const std::string& file, DescReport* report);

    /// The items under `key`; an empty list for an unknown one, which stays unknown: any
    /// number of threads look up at once.
    const std::vector<DescItem>& Find(int key) const {
        const auto entry = m_items.find(key);
        return entry == m_items.end() ? s_none : entry->second;
    }

    /// The item of a key that has one item only, a list; else null.
    const DescItem* SoleList(int key) const {
        if (m_sole_lists.empty()) {
            return nullptr;
        }
        const auto entry = m_sole_lists.find(key);
        return entry == m_sole_lists.end() ? nullptr : entry->second;
    }

  private:
    // Whether the line held an item; else how many fields it has.
    bool TakeLine(std::string& line, int& fields);

    static const std::vector<DescItem> s_none;
    std::map<int, std::vector<DescItem>> m_items;
    std::map<int, const DescItem*> m_sole_lists;
};

/// Where the platform keeps the table of its processes.
std::string PlatformDescFile();

}  // namespace FrameUtil
