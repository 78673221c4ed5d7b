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

# Ends the script as skipped (exit 77) when one of the tools is not installed.
need_tools() {
    local tool
    for tool in "$@"; do
        command -v "$tool" >/dev/null || { echo "skipped: $tool is not installed"; exit 77; }
    done
}

# Fills the private address book from a folder of import files, through cvdctl as another program would.
import_address_book() {
    local bin=$1 fixtures=$2 kind
    for kind in carriers recipients groups members; do
        "$bin/cvdctl" import "$kind" "$fixtures/$kind.txt" >/dev/null
    done
}

# Runs the command (the calling script again) on a private X server, marked as being inside it.
run_on_private_x() {
    CVD_INSIDE_X=1 xvfb-run -a -s "-screen 0 1280x1024x24" "$@"
}
