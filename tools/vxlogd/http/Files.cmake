# vx_embed_files(SOURCE PATH=FILE=TYPE...) writes the source that defines FILES of Files.h.
function(vx_embed_files source)
    set(arrays "")
    set(rows "")
    foreach(row IN LISTS ARGN)
        string(REGEX MATCH "^([^=]+)=([^=]+)=([^=]+)$" matched "${row}")
        set(path "${CMAKE_MATCH_1}")
        set(name "${CMAKE_MATCH_2}")
        set(type "${CMAKE_MATCH_3}")
        set(file "${CMAKE_CURRENT_SOURCE_DIR}/vxlogd/http/${name}")
        set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")
        file(READ "${file}" bytes HEX)
        string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
        string(MAKE_C_IDENTIFIER "${name}" identifier)
        string(APPEND arrays "constexpr unsigned char ${identifier}[] = {${bytes}};\n")
        string(APPEND rows "    {\"${path}\", \"${type}; charset=utf-8\", ${identifier}, sizeof ${identifier}},\n")
    endforeach()
    file(CONFIGURE OUTPUT "${source}" @ONLY CONTENT "#include \"vxlogd/http/Files.h\"

namespace vxlogd::http {

namespace {

@arrays@
constexpr File ROWS[] = {
@rows@};

} // namespace

constinit const std::span<const File> FILES = ROWS;

} // namespace vxlogd::http
")
endfunction()
