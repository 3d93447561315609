# cmake -DSOURCE=FOLDER -DOUTPUT=FILE "-DBUILD=TEXT" -P stamp.cmake: writes the source of PageMakerStamp(), which is
# another one whenever a header that the program and the module of pages share has changed, or the text.
set(text "${BUILD}")
foreach(room mif xml model render/design)
  file(GLOB headers ${SOURCE}/src/embedded/${room}/*.h)
  foreach(header ${headers})
    file(SHA256 ${header} digest)
    string(APPEND text " ${digest}")
  endforeach()
endforeach()
string(SHA256 digest "${text}")
file(WRITE ${OUTPUT} "#include \"embedded/render/design/page_maker.h\"

namespace qelm::embedded::render {

const char* PageMakerStamp() { return \"${digest}\"; }

}  // namespace qelm::embedded::render
")
