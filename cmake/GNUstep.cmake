# GNUstep's compiler and linker flags, taken from gnustep-config as GNUstep's
# own makefiles do, and offered as the imported targets GNUstep::Base
# (Foundation) and GNUstep::Gui (AppKit, which brings Foundation along).
find_program(GNUSTEP_CONFIG gnustep-config REQUIRED)
execute_process(COMMAND ${GNUSTEP_CONFIG} --objc-flags
                OUTPUT_VARIABLE _gs_objc_flags OUTPUT_STRIP_TRAILING_WHITESPACE)
execute_process(COMMAND ${GNUSTEP_CONFIG} --base-libs
                OUTPUT_VARIABLE _gs_base_libs OUTPUT_STRIP_TRAILING_WHITESPACE)
execute_process(COMMAND ${GNUSTEP_CONFIG} --gui-libs
                OUTPUT_VARIABLE _gs_gui_libs OUTPUT_STRIP_TRAILING_WHITESPACE)
separate_arguments(_gs_objc_flags UNIX_COMMAND "${_gs_objc_flags}")
separate_arguments(_gs_base_libs UNIX_COMMAND "${_gs_base_libs}")
separate_arguments(_gs_gui_libs UNIX_COMMAND "${_gs_gui_libs}")

# gnustep-config also hands out dependency-file, optimisation and warning
# flags; the build chooses those itself.
# It also names folders that may not exist on this machine (the user's own
# GNUstep folders, /usr/local); only those that do are kept.
set(GNUSTEP_OBJC_FLAGS "")
foreach(flag IN LISTS _gs_objc_flags)
  if(flag MATCHES "^-I(/.*)$")
    # GNUstep's headers are system headers: their warnings are not ours.
    if(IS_DIRECTORY "${CMAKE_MATCH_1}")
      list(APPEND GNUSTEP_OBJC_FLAGS "-isystem${CMAKE_MATCH_1}")
    endif()
  elseif(NOT flag MATCHES "^-(MMD|MP|O[0-9s]?|g|Wall|I\\.)$")
    list(APPEND GNUSTEP_OBJC_FLAGS "${flag}")
  endif()
endforeach()
function(_gnustep_link_flags out)
  set(result "")
  foreach(flag IN LISTS ARGN)
    if(flag MATCHES "^-L(/.*)$")
      if(IS_DIRECTORY "${CMAKE_MATCH_1}")
        list(APPEND result "${flag}")
      endif()
    elseif(NOT flag MATCHES "^-(shared-libgcc|rdynamic)$")
      list(APPEND result "${flag}")
    endif()
  endforeach()
  set(${out} "${result}" PARENT_SCOPE)
endfunction()
_gnustep_link_flags(GNUSTEP_BASE_LINK ${_gs_base_libs})
_gnustep_link_flags(GNUSTEP_GUI_LINK ${_gs_gui_libs})

if(NOT TARGET GNUstep::Base)
  add_library(GNUstep::Base INTERFACE IMPORTED)
  set_property(TARGET GNUstep::Base PROPERTY INTERFACE_COMPILE_OPTIONS
             "$<$<COMPILE_LANGUAGE:OBJC>:${GNUSTEP_OBJC_FLAGS}>")
  set_property(TARGET GNUstep::Base PROPERTY INTERFACE_LINK_LIBRARIES "${GNUSTEP_BASE_LINK}")
endif()
if(NOT TARGET GNUstep::Gui)
  add_library(GNUstep::Gui INTERFACE IMPORTED)
  set_property(TARGET GNUstep::Gui PROPERTY INTERFACE_COMPILE_OPTIONS
             "$<$<COMPILE_LANGUAGE:OBJC>:${GNUSTEP_OBJC_FLAGS}>")
  set_property(TARGET GNUstep::Gui PROPERTY INTERFACE_LINK_LIBRARIES "${GNUSTEP_GUI_LINK}")
endif()
