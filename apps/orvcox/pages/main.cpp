// orvcox_page_writer FOLDER: writes the manual page and the completions of orvcox into a folder.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "apps/orvcox/CommandLine.h"
#include "apps/orvcox/pages/ManualPage.h"
#include "apps/orvcox/pages/ShellCompletion.h"

namespace {

void WriteFile(const std::filesystem::path& file, const std::string& text) {
  std::ofstream stream(file, std::ios::binary);
  stream << text;
  stream.close();
  if (!stream) throw std::runtime_error(file.string() + ": cannot be written.");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: orvcox_page_writer FOLDER\n";
    return 2;
  }
  const std::filesystem::path folder = argv[1];
  try {
    orv::UseDeclaredProgram([&](const CLI::App& program, const orv::WordsOfOptions& words) {
      const orv::pages::ProgramOutline outline = orv::pages::OutlineProgram(program, words, ORV_VERSION);
      const std::string& name = outline.Program.Name;
      WriteFile(folder / (name + ".1"), orv::pages::WriteManualPage(outline));
      WriteFile(folder / name, orv::pages::WriteBashCompletion(outline));
      WriteFile(folder / ("_" + name), orv::pages::WriteZshCompletion(outline));
    });
  } catch (const std::exception& error) {
    std::cerr << "orvcox_page_writer: " << error.what() << '\n';
    return 1;
  }
  return 0;
}
