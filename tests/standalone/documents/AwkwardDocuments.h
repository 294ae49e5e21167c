// Documents whose texts hold what a form of output could take as its own, and one of every kind of document.
#pragma once

#include <string>

#include "SampleDocuments.h"
#include "standalone/documents/ResultDocuments.h"
#include "standalone/documents/RunReport.h"

namespace orv {

inline const std::string Emoji = "\xF0\x9F\xA7\xAC";                       // a strand of DNA
inline const std::string Hebrew = "\xD7\x92\xD7\x99\xD7\x9C";              // "age", from right to left
inline const std::string LongLabel = std::string(299, 'L') + "!";          // nothing to break it at
inline const std::string Markup = "<b>a&amp;\"b\"</b> | `c` *d* _e_ f_g";  // signs of HTML and Markdown

inline RunReport FullReport() {
  RunReport report;
  report.Program = "orvcox";
  report.Version = "1.2.3";
  report.Cases.emplace();
  report.Cases->Read = 228;
  report.Cases->Valid = 225;
  report.Cases->Complete = 163;
  report.Cases->Censored = 62;
  report.Cases->ExcludedFor(ExclusionReason::Missing) = 2;
  report.Cases->ExcludedFor(ExclusionReason::Status) = 1;
  report.Cases->MissingByVariable = {{"ph.ecog", 1}, {"inst", 0}, {"ph_<karno>", 1}};
  report.LeftOutColumns = {"sex_2", "a*b"};
  report.Fit = FitReport{false, 2, 50};
  report.Messages = {{10178, "First line.\nSecond <line>."}};
  return report;
}

inline ResultDocument AwkwardSheet() {
  return Sheet({"Estimates & <tests>\n * fixed", "# second"}, {Markup, Hebrew, LongLabel},
               {TextColumn("Level", {Emoji, "", "a\nb\x1b[2J\xFF"}),
                NumberColumn("P value", {0.00001, NoNumber, 0.5}, {true, false, false}),
                NumberColumn("x|y", {1.5, -0.25, NoNumber}, {true, false, false})},
               "Name");
}

inline ResultDocument CodeDocument() {
  ResultDocument document;
  document.Name = "c";
  document.Titles = {"C Code"};
  document.Content = TextContent{"if (a < b && c) {\n\tputs(\"```\");\n}"};
  return document;
}

inline ResultDocument CurveDocument() {
  ResultDocument document;
  document.Name = "plots";
  document.Titles = {"Survivor function"};
  document.Content = ChartContent{"Time", "Survival", {{"Pattern 1", "value", {0, 5, 999}, {1, 0.5, NoNumber}}}};
  return document;
}

inline ResultDocuments AwkwardDocuments() {
  ResultDocuments documents;
  documents.Add(AwkwardSheet());
  documents.Add(CodeDocument());
  documents.Add(CurveDocument());
  return documents;
}

}  // namespace orv
