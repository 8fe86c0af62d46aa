// kelpctl/paraset/tree_path.h - where in a tree, as a message names it.
//
//     TreePath path;                        // "$"
//     const auto step = path.Into("ne");    // "$.ne", until `step` ends
//     const auto next = path.Into(3);       // "$.ne[3]"
//
// Thread rule: thread-compatible.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kelpctl {

class TreePath {
  public:
    /// Takes its step back when it ends.
    class Step {
      public:
        Step(TreePath& path, std::size_t length) : path_(path), length_(length) {}
        ~Step() { path_.text_.resize(length_); }
        Step(const Step&) = delete;
        Step& operator=(const Step&) = delete;

      private:
        TreePath& path_;
        std::size_t length_;
    };

    /// To the child of this key. Keys that are no plain words are quoted.
    [[nodiscard]] Step Into(std::string_view key);
    /// To the element at this index.
    [[nodiscard]] Step Into(std::size_t index);

    const std::string& Text() const { return text_; }

  private:
    std::string text_ = "$";
};

/// What is wrong, and where: "$.ne[3]: null cannot be carried here".
struct Complaint {
    std::string path;
    std::string text;
    std::string Line() const { return path + ": " + text; }
};

}  // namespace kelpctl
