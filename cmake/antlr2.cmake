# quirnote_antlr2(TARGET GRAMMAR): runs the ANTLR 2 generator on GRAMMAR.g at build time and adds
# what comes of it to TARGET. Each "class NAME extends Lexer|Parser|TreeParser" gives NAME.hpp,
# included as "NAME.hpp" by the sources of TARGET alone. Warnings are off in generated code.
find_program(ANTLR2_JAVA java REQUIRED)
find_file(ANTLR2_JAR NAMES antlr.jar antlr2.jar antlr-2.7.7.jar PATHS /usr/share/java
          PATH_SUFFIXES antlr antlr2 antlr-2.7.7 REQUIRED)
find_path(ANTLR2_INCLUDE_DIR antlr/LLkParser.hpp REQUIRED)
# The objects end up in a program that exports its symbols, so the library must be relocatable.
find_library(ANTLR2_LIBRARY NAMES antlr-pic antlr REQUIRED)

function(quirnote_antlr2 target grammar)
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/antlr2/${target})
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${grammar})
  file(STRINGS ${grammar} classes REGEX "^class +[A-Za-z_0-9]+ +extends")
  file(STRINGS ${grammar} vocabularies REGEX "exportVocab *=")
  set(sources)
  set(headers)
  foreach(line ${classes})
    string(REGEX REPLACE "^class +([A-Za-z_0-9]+) .*" "\\1" class "${line}")
    list(APPEND sources ${folder}/${class}.cpp)
    list(APPEND headers ${folder}/${class}.hpp)
  endforeach()
  foreach(line ${vocabularies})
    string(REGEX REPLACE ".*exportVocab *= *([A-Za-z_0-9]+).*" "\\1" vocabulary "${line}")
    list(APPEND headers ${folder}/${vocabulary}TokenTypes.hpp)
  endforeach()
  list(REMOVE_DUPLICATES headers)
  cmake_path(GET grammar FILENAME name)
  add_custom_command(
    OUTPUT ${sources} ${headers}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
    COMMAND ${ANTLR2_JAVA} -Djava.awt.headless=true -XX:TieredStopAtLevel=1 -cp ${ANTLR2_JAR}
            antlr.Tool -o ${folder} ${grammar}
    DEPENDS ${grammar}
    COMMENT "Generating lexer and parser from ${name}"
    VERBATIM)
  set_source_files_properties(${sources} PROPERTIES COMPILE_OPTIONS "-w")
  target_sources(${target} PRIVATE ${sources} ${headers})
  target_include_directories(${target} SYSTEM PRIVATE ${folder} ${ANTLR2_INCLUDE_DIR})
  target_link_libraries(${target} PUBLIC ${ANTLR2_LIBRARY})
endfunction()
