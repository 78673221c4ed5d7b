# Compiler settings shared by every target of the project.
add_library(cvd_common_cfg INTERFACE)
target_compile_features(cvd_common_cfg INTERFACE cxx_std_20)
target_compile_options(cvd_common_cfg INTERFACE
    -Wall -Wextra -Wpedantic -Wold-style-cast -Woverloaded-virtual -Wnon-virtual-dtor)
target_compile_definitions(cvd_common_cfg INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CONTEXTLESS_CONNECT QT_USE_QSTRINGBUILDER)
# Every target compiles and links with -pthread, as Qt and the libraries beneath it expect; one setting for all
# also keeps the targets that share a precompiled header in agreement.
target_compile_options(cvd_common_cfg INTERFACE -pthread)
target_link_options(cvd_common_cfg INTERFACE -pthread)
option(CVD_WERROR "Treat warnings as errors" OFF)
if(CVD_WERROR)
    target_compile_options(cvd_common_cfg INTERFACE -Werror)
endif()

# Precompiled headers: the Qt and test framework headers are most of what each source costs to compile. One
# target of each kind builds its header; every other target of that kind reuses it, which holds because the
# macros the targets differ in (the Qt module flags, the test application kind) are not used by those headers.
option(CVD_PCH "Precompile the headers that the targets share" ON)
# `kind` names a header list in cmake/pch/: core, widgets, tests or widget_tests.
function(cvd_precompile target kind)
    if(NOT CVD_PCH)
        return()
    endif()
    get_property(owner GLOBAL PROPERTY CVD_PCH_OWNER_${kind})
    if(owner)
        target_precompile_headers(${target} REUSE_FROM ${owner})
    else()
        target_precompile_headers(${target} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/pch/${kind}.h)
        set_property(GLOBAL PROPERTY CVD_PCH_OWNER_${kind} ${target})
    endif()
endfunction()

# The quick build of the test run: no optimisation and no debug information, assertions on.
set(CMAKE_CXX_FLAGS_CHECK "-O0" CACHE STRING "Compiler flags of the Check build, the one the tests run on")
