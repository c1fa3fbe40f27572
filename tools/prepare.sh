# Sourced by ./run and ./test: installs what packages.txt lists and is missing. Speaks on standard
# error alone.

say() { echo "$*" >&2; }

missing_packages() {
  sed 's/#.*//' packages.txt | xargs -n1 | while read -r package; do
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] ||
      echo "$package"
  done
}

as_root() {
  if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi
}

install_packages() {
  local stamp missing log=build/install.log
  stamp=build/.packages-$(cksum <packages.txt | tr ' ' '-')
  [ -e "$stamp" ] && return
  mkdir -p build
  if command -v dpkg-query >/dev/null; then
    missing=$(missing_packages)
    if [ -n "$missing" ]; then
      say "installing:" $missing
      if ! { as_root apt-get update && as_root env DEBIAN_FRONTEND=noninteractive \
               apt-get install -y --no-install-recommends $missing; } >"$log" 2>&1 </dev/null; then
        cat "$log" >&2
        say "could not install:" $missing
        return 1
      fi
    fi
  else
    say "this system has no dpkg: make sure yourself that what packages.txt lists is there"
  fi
  rm -f build/.packages-*
  touch "$stamp"
}

# build_preset PRESET [TARGET]: configures if that was not done yet, and builds. Ninja looks itself
# whether the build description has changed. $launcher, if set, stands before it.
build_preset() {
  local preset=$1 log=build/$1.log ninja="${launcher:-} ninja -j $(nproc) -C build/$1"
  mkdir -p build
  if [ ! -e "build/$preset/build.ninja" ]; then
    say "configuring $preset"
    cmake --preset "$preset" >"$log" 2>&1 </dev/null || { tail -n 100 "$log" >&2; return 1; }
  fi
  if ! $ninja -n ${2:+"$2"} 2>/dev/null </dev/null | grep -q 'no work to do'; then
    say "building $preset"
    $ninja ${2:+"$2"} >"$log" 2>&1 </dev/null || { tail -n 100 "$log" >&2; return 1; }
  fi
}
