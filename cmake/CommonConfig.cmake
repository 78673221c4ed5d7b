# Compiler settings shared by every target of the project.
add_library(cvd_common_cfg INTERFACE)
target_compile_features(cvd_common_cfg INTERFACE cxx_std_20)
target_compile_options(cvd_common_cfg INTERFACE
    -Wall -Wextra -Wpedantic -Wold-style-cast -Woverloaded-virtual -Wnon-virtual-dtor)
target_compile_definitions(cvd_common_cfg INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CONTEXTLESS_CONNECT QT_USE_QSTRINGBUILDER)
option(CVD_WERROR "Treat warnings as errors" OFF)
if(CVD_WERROR)
    target_compile_options(cvd_common_cfg INTERFACE -Werror)
endif()
