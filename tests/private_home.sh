# Sourced by the runners of tests: makes $work, a folder with a home, all of the XDG folders and
# an empty folder files/ of its own, which becomes the working folder, and removes it at the end.
# A runner that has more to clean up defines on_exit.
work=$(mktemp -d "${TMPDIR:-/tmp}/quirnote-test.XXXXXX")
on_exit() { :; }
trap 'on_exit; rm -rf -- "$work"' EXIT
trap 'exit 143' TERM
trap 'exit 130' INT
mkdir -m 700 "$work"/{home,config,data,state,cache,runtime,files}
export HOME=$work/home
export XDG_CONFIG_HOME=$work/config XDG_DATA_HOME=$work/data XDG_STATE_HOME=$work/state
export XDG_CACHE_HOME=$work/cache XDG_RUNTIME_DIR=$work/runtime
export LC_ALL=C.UTF-8
unset DISPLAY WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS
cd "$work/files"
