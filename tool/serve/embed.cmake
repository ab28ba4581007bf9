# The files of the page as arrays of a C++ source:  cmake -Dfolder=... -Dnames=a.html|b.js -Doutput=... -P embed.cmake
string(REPLACE "|" ";" names "${names}")
set(arrays "")
set(table "")
set(number 0)
foreach(name IN LISTS names)
  file(READ "${folder}/${name}" bytes HEX)
  string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
  string(APPEND arrays "const unsigned char file_${number}[] = {${bytes}0};\n")
  string(APPEND table "    {\"/${name}\", {reinterpret_cast<const char*>(file_${number}), sizeof file_${number} - 1}},\n")
  math(EXPR number "${number} + 1")
endforeach()
file(WRITE "${output}" "#include \"tool/serve/site.h\"

namespace {
${arrays}}

namespace velquor {

const std::vector<Embedded>& embedded() {
  static const std::vector<Embedded> all = {
${table}  };
  return all;
}

}
")
