# MessagePack's C++ headers, all that is used of it: MSGPACK_INCLUDE_DIR. Their package has had three
# names, and each of them also asks for Boost, which is not needed.
find_path(MSGPACK_INCLUDE_DIR msgpack.hpp)
foreach(name msgpack-cxx msgpackc-cxx msgpack)
  if(NOT MSGPACK_INCLUDE_DIR)
    find_package(${name} QUIET CONFIG)
    foreach(target msgpack-cxx msgpackc-cxx)
      if(NOT MSGPACK_INCLUDE_DIR AND TARGET ${target})
        get_target_property(folders ${target} INTERFACE_INCLUDE_DIRECTORIES)
        find_path(MSGPACK_INCLUDE_DIR msgpack.hpp HINTS ${folders})
      endif()
    endforeach()
  endif()
endforeach()
if(NOT MSGPACK_INCLUDE_DIR)
  message(FATAL_ERROR "msgpack.hpp, the C++ headers of MessagePack, is missing. "
                      "MSGPACK_INCLUDE_DIR can name its folder.")
endif()
