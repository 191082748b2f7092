// The item tree an import builds before it touches the popup: each node has
// its two-digit code, its level text and, for leaves, its companion values.
#ifndef ZEPHYR_EXCEL_IMPORT_TREE_H_
#define ZEPHYR_EXCEL_IMPORT_TREE_H_

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace zephyr::excel {

class ImportNode {
 public:
  std::string code;
  std::string text;
  std::vector<std::string> companions;

  const std::vector<std::unique_ptr<ImportNode>>& Children() const { return children_; }
  std::vector<std::unique_ptr<ImportNode>>& Children() { return children_; }

  // The first child added with this code or this text, or null.
  ImportNode* ChildWithCode(const std::string& wanted) const;
  ImportNode* ChildWithText(const std::string& wanted) const;
  ImportNode& AddChild(std::string child_code, std::string child_text);

 private:
  std::vector<std::unique_ptr<ImportNode>> children_;
  std::unordered_map<std::string, ImportNode*> by_code_;
  std::unordered_map<std::string, ImportNode*> by_text_;
};

}  // namespace zephyr::excel

#endif  // ZEPHYR_EXCEL_IMPORT_TREE_H_
