# Sourced by the scripts that start cvd on a private X server: every folder, the registry, the runtime folder
# and the control map in the fresh folder $1, never the real ones, and no platform choice taken from outside.
enter_private_environment() {
    local work=$1
    export CVD_WORK=$work
    export CVD_COMMON_APPDATA=$work/common XDG_DATA_HOME=$work/data XDG_STATE_HOME=$work/state
    export CVD_REGISTRY_ROOT=$work/registry CVD_RUNTIME_DIR=$work/runtime XDG_RUNTIME_DIR=$work/xdg
    export CVD_CONTROL_MAP=$work/controls.map
    mkdir -p "$work/xdg" && chmod 700 "$work/xdg"
    unset QT_QPA_PLATFORM WAYLAND_DISPLAY
}
