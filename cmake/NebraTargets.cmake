# Helpers shared by every CMakeLists of the project.

# nebra_forbid_widgets(target): fails the configuration when QtWidgets can be
# reached through the target's link libraries. Libraries that hold logic and no
# user interface call it, so that a widget dependency cannot creep in.
function(nebra_forbid_widgets target)
    set_property(GLOBAL APPEND PROPERTY NEBRA_WIDGET_FREE_TARGETS ${target})
endfunction()

function(_nebra_collect_links target out)
    set(seen ${${out}})
    if(target IN_LIST seen)
        return()
    endif()
    list(APPEND seen ${target})
    if(TARGET ${target})
        get_target_property(aliased ${target} ALIASED_TARGET)
        if(aliased)
            set(target ${aliased})
        endif()
        get_target_property(type ${target} TYPE)
        set(libs "")
        if(NOT type STREQUAL "INTERFACE_LIBRARY")
            get_target_property(direct ${target} LINK_LIBRARIES)
            if(direct)
                list(APPEND libs ${direct})
            endif()
        endif()
        get_target_property(iface ${target} INTERFACE_LINK_LIBRARIES)
        if(iface)
            list(APPEND libs ${iface})
        endif()
        foreach(lib IN LISTS libs)
            if(lib MATCHES "^\\$<")
                continue()
            endif()
            _nebra_collect_links(${lib} seen)
        endforeach()
    endif()
    set(${out} ${seen} PARENT_SCOPE)
endfunction()

# Called once at the end of the top-level configuration.
function(nebra_check_widget_free_targets)
    get_property(targets GLOBAL PROPERTY NEBRA_WIDGET_FREE_TARGETS)
    foreach(t IN LISTS targets)
        set(all "")
        _nebra_collect_links(${t} all)
        foreach(dep IN LISTS all)
            if(dep MATCHES "Widgets|WebEngineWidgets|OpenGLWidgets|Qt6::Help")
                message(FATAL_ERROR "${t} must not link QtWidgets, but reaches ${dep}")
            endif()
        endforeach()
    endforeach()
endfunction()

# The subsystems sit between the platform and the shell: none of their
# libraries may reach the shell, or the layers would point upward. Every
# target built in one of these folders is checked, so a new library there
# needs no registration.
set(NEBRA_SUBSYSTEM_FOLDERS tree files security options wizards help)

# Called once at the end of the top-level configuration.
function(nebra_check_subsystem_layers)
    foreach(folder IN LISTS NEBRA_SUBSYSTEM_FOLDERS)
        set(dir ${CMAKE_SOURCE_DIR}/src/${folder})
        if(NOT EXISTS ${dir}/CMakeLists.txt)
            continue()
        endif()
        get_property(targets DIRECTORY ${dir} PROPERTY BUILDSYSTEM_TARGETS)
        foreach(t IN LISTS targets)
            set(all "")
            _nebra_collect_links(${t} all)
            foreach(dep IN LISTS all)
                if(dep MATCHES "^nmain_shell")
                    message(FATAL_ERROR "${t} (src/${folder}) must not link the shell, but reaches ${dep}")
                endif()
            endforeach()
        endforeach()
    endforeach()
endfunction()

# nebra_add_test(name SOURCES ... LIBS ...): one QtTest executable run by CTest
# on the offscreen platform, with its user folders redirected into the build tree.
function(nebra_add_test name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE Qt6::Test ${ARG_LIBS})
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests/support)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES ENVIRONMENT
        "QT_QPA_PLATFORM=offscreen;QTWEBENGINE_DISABLE_SANDBOX=1;NEBRA_TEST_DATA_DIR=${CMAKE_SOURCE_DIR}/data")
endfunction()
