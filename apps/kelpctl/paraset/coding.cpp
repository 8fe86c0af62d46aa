#include "kelpctl/paraset/coding.h"

#include <algorithm>
#include <vector>

#include "kelp/asn1.h"
#include "kelpctl/paraset/compare.h"
#include "kelpctl/paraset/elements.h"
#include "kelpctl/paraset/fit.h"
#include "kelpctl/paraset/tree_json.h"
#include "kelpctl/paraset/types.h"
#include "kelpctl/paraset/undescribed.h"
#include "support/utf8.h"

namespace kelpctl {
namespace {

using FrameUtil::AsnCommonRequest;
using FrameUtil::AsnCommonResponse;
using FrameUtil::CEndeCode;
using FrameUtil::CodecFault;
using FrameUtil::CParaSet;
using FrameUtil::DescItem;

void Convert(CParaSet& tree, AsnCommonRequest& record) {
    tree.Para2CommonReqAsn(record);
}
void Convert(CParaSet& tree, AsnCommonResponse& record) {
    tree.Para2CommonRspAsn(record);
}
void Convert(const AsnCommonRequest& record, CParaSet& tree) {
    tree.CommonReqAsn2Para(record);
}
void Convert(const AsnCommonResponse& record, CParaSet& tree) {
    tree.CommonRspAsn2Para(record);
}

// A table writes as many rows as it says, from however few values.
bool RowsAreThere(CParaSet& table, TreePath& path, std::string& why) {
    const auto count = table.GetMapValue().find("##RowCount");
    if (count == table.GetMapValue().end() || count->second == nullptr) {
        return true;
    }
    std::size_t rows = 1;
    for (const auto& [name, column] : table.GetMapValue()) {
        if (column != nullptr && column->type() == CParaSet::PARA_ARRAY) {
            rows = std::max(rows, column->GetVctValue().size());
        }
    }
    if (count->second->asInt() <= 0 || static_cast<std::size_t>(count->second->asInt()) <= rows) {
        return true;
    }
    const auto step = path.Into("##RowCount");
    why = path.Text() + ": counts more rows than a column has";
    return false;
}

bool AllRowsAreThere(CParaSet& root, std::string& why) {
    TreePath path;
    for (const auto& [name, table] : root.GetMapValue()) {
        const auto step = path.Into(name);
        if (table != nullptr && !RowsAreThere(*table, path, why)) {
            return false;
        }
    }
    return RowsAreThere(root, path, why);
}

// All of a tree: its own copying leaves out what is absent.
void CopyTree(CParaSet& from, CParaSet& to) {
    to.SetName(from.name());
    to.SetDesc(from.GetDesc());
    const CParaSet::ValueType type = from.type();
    if (type == CParaSet::PARA_ARRAY) {
        for (CParaSet* child : from.GetVctValue()) {
            to.GetVctValue().push_back(nullptr);
            if (child != nullptr) {
                CopyTree(*child, *(to.GetVctValue().back() = new CParaSet("")));
            }
        }
    } else if (type == CParaSet::PARA_STRUCT) {
        for (const auto& [key, child] : from.GetMapValue()) {
            CParaSet*& entry = to.GetMapValue()[key];
            if (child != nullptr) {
                CopyTree(*child, *(entry = new CParaSet("")));
            }
        }
    } else {
        to = from;
    }
    to.SetType(type);
}

template <class Record>
bool EncodeRecord(CParaSet& tree, std::string& octets, std::string& why) {
    if (tree.type() != CParaSet::PARA_STRUCT) {
        why = std::string("$: is ") + KindOf(tree.type()) +
              ", where a common record wants a structure";
        return false;
    }
    if (!AllRowsAreThere(tree, why)) {
        return false;
    }
    // Writing makes nodes where it finds none; what was meant stays as it was.
    CParaSet copy(kRootName);
    CopyTree(tree, copy);
    Record record;
    AsnBuffer out;
    Convert(copy, record);
    if (!AsnEncode(record, out, kMostOctets)) {
        why = "$: takes more than " + std::to_string(kMostOctets) + " octets";
        return false;
    }
    octets.assign(reinterpret_cast<const char*>(out.data()), out.size());
    return true;
}

template <class Record>
bool DecodeRecord(std::string_view octets, CParaSet& tree, std::string& why) {
    Record record;
    if (!AsnDecode(octets.data(), octets.size(), record, &why)) {
        return false;
    }
    try {
        Convert(record, tree);
    } catch (const FrameUtil::FRexception&) {
        why = "its tables contradict one another or the header values";
        return false;
    }
    return true;
}

// A key whose only item is a list is read as that list, without the structure around it
// that build() writes.
const DescItem* SoleList(const std::vector<DescItem>& items, const Form& form) {
    const bool sole = form.kind == Form::Kind::kCodec && form.desc == -1 && form.tag == -1 &&
                      items.size() == 1 && items.front().type == codec_type::kList;
    return sole ? &items.front() : nullptr;
}

// The arguments to write with: a list that is given for such a key is the list itself.
Form WrittenForm(const CEndeCode& codec, const Form& form, const CParaSet& tree) {
    if (form.kind == Form::Kind::kUndescribed) {
        return FormOfValue(tree);
    }
    if (tree.type() == CParaSet::PARA_ARRAY) {
        const std::vector<DescItem> items = codec.findDesc(form.type);
        if (const DescItem* list = SoleList(items, form)) {
            return {form.kind, list->type, list->desc, list->tag};
        }
    }
    return form;
}

std::string PathOf(const CodecFault& fault) {
    const bool dot = !fault.path.empty() && fault.path.front() != '[';
    return (dot ? "$." : "$") + app::ShowText(fault.path);
}

bool Build(const CEndeCode& codec, const Form& form, bool as_string, CParaSet& tree,
           std::string& octets, std::string& why) {
    // Not cleared: what is not written to costs no memory.
    const std::unique_ptr<unsigned char[]> buffer(new unsigned char[kMostOctets]);
    int left = kMostOctets;
    CodecFault fault;
    const auto build = as_string ? &CEndeCode::buildAsString : &CEndeCode::build;
    const unsigned char* end =
        (codec.*build)(tree, buffer.get(), left, form.type, form.desc, form.tag, &fault);
    if (end == nullptr) {
        why = PathOf(fault) + ": cannot be encoded: " + fault.reason;
        return false;
    }
    octets.assign(reinterpret_cast<const char*>(buffer.get()),
                  static_cast<std::size_t>(end - buffer.get()));
    return true;
}

bool Parse(const CEndeCode& codec, const Form& form, std::string& octets, CParaSet& tree,
           std::string& why) {
    auto* const begin = reinterpret_cast<unsigned char*>(octets.data());
    int left = static_cast<int>(octets.size());
    CodecFault fault;
    const unsigned char* end =
        codec.parse(tree, begin, left, form.type, form.desc, form.tag, &fault);
    if (end == nullptr) {
        why = std::string(fault.reason) + " at offset " + std::to_string(fault.offset) +
              (fault.path.empty() ? "" : " (" + PathOf(fault) + ")");
        return false;
    }
    if (end == begin) {
        why = "another element than the one described at offset 0";
        return false;
    }
    if (left != 0) {
        why = "octets behind the element at offset " + std::to_string(end - begin);
        return false;
    }
    return true;
}

// Whether `octets` read back as `meant`, whatever the description made of them.
bool ReadsBack(const CEndeCode& codec, const Form& form, const std::string& octets, CParaSet& meant,
               std::string& why) {
    CParaSet read(kRootName);
    std::string note;
    std::string reason;
    if (!DecodeTree(codec, form, octets, read, reason, note)) {
        why = "$: would not read back: " + reason;
        return false;
    }
    const bool described = form.kind == Form::Kind::kCodec || form.kind == Form::Kind::kUndescribed;
    const auto loss = FirstLoss(meant, read, described ? Nulls::kVanish : Nulls::kStay);
    if (!loss) {
        return true;
    }
    why = loss->Line();
    if (meant.type() == CParaSet::PARA_STRUCT && SoleList(codec.findDesc(form.type), form)) {
        why += "; its only member is all that is read: give that list itself";
    }
    return false;
}

}  // namespace

bool EncodeTree(const CEndeCode& codec, const Form& form, const EncodeOptions& options,
                CParaSet& tree, std::string& octets, std::string& why) {
    bool encoded = false;
    if (form.kind == Form::Kind::kRequest) {
        encoded = EncodeRecord<AsnCommonRequest>(tree, octets, why);
    } else if (form.kind == Form::Kind::kResponse) {
        encoded = EncodeRecord<AsnCommonResponse>(tree, octets, why);
    } else {
        const Form written = WrittenForm(codec, form, tree);
        Complaint misfit;
        if (!FitsDescription(codec, tree, written.type, written.desc, misfit)) {
            why = misfit.Line();
        } else {
            encoded = Build(codec, written, options.as_string, tree, octets, why);
        }
    }
    encoded = encoded && (options.one_way || ReadsBack(codec, form, octets, tree, why));
    if (!encoded) {
        octets.clear();
    }
    return encoded;
}

bool DecodeTree(const CEndeCode& codec, const Form& form, std::string octets, CParaSet& tree,
                std::string& why, std::string& note) {
    note.clear();
    Form read = form;
    bool decoded = false;
    if (form.kind == Form::Kind::kRequest) {
        decoded = DecodeRecord<AsnCommonRequest>(octets, tree, why);
    } else if (form.kind == Form::Kind::kResponse) {
        decoded = DecodeRecord<AsnCommonResponse>(octets, tree, why);
    } else {
        if (form.kind == Form::Kind::kUndescribed) {
            const auto found = FormOfOctets(octets, why);
            if (!found) {
                return false;
            }
            read = *found;
        }
        decoded = Parse(codec, read, octets, tree, why);
    }
    if (decoded) {
        note = NoteOfLosses(codec, read, octets);
    }
    return decoded;
}

}  // namespace kelpctl
