#include "import_tree.h"

namespace zephyr::excel {

namespace {

ImportNode* Lookup(const std::unordered_map<std::string, ImportNode*>& index,
                   const std::string& wanted) {
  auto found = index.find(wanted);
  return found == index.end() ? nullptr : found->second;
}

}  // namespace

ImportNode* ImportNode::ChildWithCode(const std::string& wanted) const {
  return Lookup(by_code_, wanted);
}

ImportNode* ImportNode::ChildWithText(const std::string& wanted) const {
  return Lookup(by_text_, wanted);
}

ImportNode& ImportNode::AddChild(std::string child_code, std::string child_text) {
  auto child = std::make_unique<ImportNode>();
  child->code = std::move(child_code);
  child->text = std::move(child_text);
  ImportNode* added = child.get();
  children_.push_back(std::move(child));
  if (!added->code.empty()) by_code_.emplace(added->code, added);
  by_text_.emplace(added->text, added);
  return *added;
}

}  // namespace zephyr::excel
