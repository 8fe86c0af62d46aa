# The peer that judges our encodings and that the benchmarks compare with: the C
# library which Debian's asn1c makes of docs/frameutil.asn1.
#
#   include(Asn1c)
#   target_link_libraries(my_bench PRIVATE asn1c_frameutil)
#   #include "support/asn1c/peer.h"    // its names, in namespace asn1c
#
# It is generated into the build tree and compiled like a product that is shipped:
# optimised, without assertions and debug calls, whatever the preset, and without this
# project's warnings and sanitizers. Its decoder measures the stack by addresses; pass
# it a context whose max_stack_size is 0 (asn1c::NoStackLimit() in peer.h), since
# AddressSanitizer keeps locals elsewhere.

if(TARGET asn1c_frameutil)
  return()
endif()

find_program(ASN1C asn1c REQUIRED)

set(module ${PROJECT_SOURCE_DIR}/docs/frameutil.asn1)
set(folder ${PROJECT_BINARY_DIR}/asn1c_frameutil)

# A source for every type of the module, and the support code of asn1c 0.9.28 that
# they need.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${module})
file(STRINGS ${module} types REGEX "^[A-Z][A-Za-z]+ ::=")
list(TRANSFORM types REPLACE " ::=.*" "")
set(names ${types}
  BIT_STRING BOOLEAN INTEGER NativeEnumerated NativeInteger NativeReal OCTET_STRING REAL
  asn_SEQUENCE_OF asn_SET_OF asn_codecs_prim ber_decoder ber_tlv_length ber_tlv_tag
  constr_SEQUENCE constr_SEQUENCE_OF constr_SET_OF constr_TYPE constraints der_encoder
  per_decoder per_encoder per_opentype per_support xer_decoder xer_encoder xer_support)
list(TRANSFORM names PREPEND ${folder}/)
set(sources ${names})
list(TRANSFORM sources APPEND .c)
set(headers ${names})
list(TRANSFORM headers APPEND .h)

file(MAKE_DIRECTORY ${folder})
add_custom_command(
  OUTPUT ${sources} BYPRODUCTS ${headers}
  COMMAND sh -c "\"$0\" -fskeletons-copy \"$1\" >asn1c.log 2>&1 || { cat asn1c.log; exit 1; }"
          ${ASN1C} ${module}
  WORKING_DIRECTORY ${folder}
  DEPENDS ${module}
  COMMENT "Generating C from frameutil.asn1"
  VERBATIM)

add_library(asn1c_frameutil STATIC ${sources})
target_include_directories(asn1c_frameutil SYSTEM PUBLIC ${folder})
target_compile_options(asn1c_frameutil PRIVATE
  -w -O2 -DNDEBUG -DEMIT_ASN_DEBUG=0
  # The macro beats the empty variadic function, whose calls no compiler removes.
  "-DASN_DEBUG(...)=((void)0)")
