// Writes the plan of a parse tree, line by line.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "query/explain/PlanParts.h"
#include "query/explain/QueryText.h"

namespace kestra {

// For one tree. Texts of more than a few lines, and what nests deeper than anybody reads, are cut.
class CPlanWriter {
 public:
  explicit CPlanWriter(const QueryContext& context) : m_context(context) {}

  void Write(const ParseNode& top);
  std::string Take() { return std::move(m_plan); }

 private:
  // Lines that are made while an object lives stand below those before it.
  class CIndent {
   public:
    explicit CIndent(CPlanWriter& writer) : m_writer(writer) { ++m_writer.m_depth; }
    ~CIndent() { --m_writer.m_depth; }
    CIndent(const CIndent&) = delete;
    CIndent& operator=(const CIndent&) = delete;

   private:
    CPlanWriter& m_writer;
  };

  void Line(std::string_view text);
  void WritePart(const ParseNode& node);
  void WriteHead(const ParseNode& node, std::string_view remark);
  void WriteSelect(const ParseNode& select);
  void WriteChange(const ParseNode& change);
  void WriteBelow(const ParseNode& node);
  void WriteIndented(const ParseNode& node);
  // What has a FROM clause or something else to run below it. often says how often that is.
  void WriteNested(const ParseNode& node, std::string_view often);

  // In FromPlan.cpp.
  void WriteFrom(const ParseNode& from);
  void WriteSources(const ParseNode& body, ParseNode* pWhere);
  void WriteSource(const PlanSource& source, bool isByIndex);
  void WriteContent(const ParseNode& source);
  void WriteJoin(const PlanSource& source, bool isByIndex);
  bool IsInChange(const ParseNode& node) const;

  const QueryContext& m_context;
  std::string m_plan;
  size_t m_depth = 0;
};

}  // namespace kestra
