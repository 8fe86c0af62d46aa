// The description table: which children a structure has, by key.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "frameutil/codec.h"

namespace FrameUtil {

/// What stands under one key.
struct Description {
    std::vector<DescItem> items;  // in the file's order
    /// Positions in `items` in the order of the names, which is how a structure keeps its
    /// children: the two are walked side by side. Without null items, which have no child.
    std::vector<unsigned> by_name;
};

class DescTable {
  public:
    DescTable() = default;

    /// Reads `file`, once; the table is immutable from then on. Not a regular file, or one
    /// that cannot be read: `report` has the reason, the table stays empty.
    void Load(const std::string& file, DescReport* report);

    /// The items under `key`; none for an unknown one, which stays unknown: any number of
    /// threads look up at once.
    const Description& Find(int key) const {
        const auto entry = m_descriptions.find(key);
        return entry == m_descriptions.end() ? s_none : entry->second;
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

    static const Description s_none;
    std::map<int, Description> m_descriptions;
    std::map<int, const DescItem*> m_sole_lists;
};

/// Where the platform keeps the table of its processes.
std::string PlatformDescFile();

}  // namespace FrameUtil
