# quorel_embed(TARGET NAMESPACE FILES...): compiles data files into TARGET as a table of texts,
# `NAMESPACE::files()`, each with its file name. The data stay editable where they lie.
function(quorel_embed target space)
  set(out ${CMAKE_CURRENT_BINARY_DIR}/embedded_${space})
  set(script ${CMAKE_SOURCE_DIR}/cmake/EmbedScript.cmake)
  file(MAKE_DIRECTORY ${out})
  add_custom_command(
    OUTPUT ${out}/${space}.cpp
    COMMAND ${CMAKE_COMMAND} -DOUT=${out}/${space}.cpp -DSPACE=${space} "-DFILES=${ARGN}" -P ${script}
    DEPENDS ${ARGN} ${script}
    VERBATIM)
  target_sources(${target} PRIVATE ${out}/${space}.cpp)
endfunction()

# The same for every file that a pattern names, in the byte order of their names; a new file needs no word
# here.
function(quorel_embed_all target space pattern)
  file(GLOB files CONFIGURE_DEPENDS ${pattern})
  list(SORT files COMPARE STRING CASE SENSITIVE)
  quorel_embed(${target} ${space} ${files})
endfunction()
