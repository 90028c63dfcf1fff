# Steps that ./run, ./test and .ci/run share. To be sourced with the project's root as current folder.

fail() {
  echo "$(basename "$0"): $1" >&2
  exit "${2:-1}"
}

# Installs those of the listed packages that are not there. Needs root or sudo only if something is missing.
install_packages() {
  command -v apt-get >/dev/null || return 0
  local wanted=() missing=() package installed
  mapfile -t wanted < <(sed -e 's/#.*//' -e '/^[[:space:]]*$/d' "$@")
  installed=$(dpkg-query -W -f='${Package} ${db:Status-Status}\n' "${wanted[@]}" 2>/dev/null || true)
  for package in "${wanted[@]}"; do
    grep -Fqx -- "$package installed" <<<"$installed" || missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0

  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || fail "these packages are missing, and there is neither root nor sudo: ${missing[*]}"
    as_root=(sudo)
  fi
  echo "Installing ${missing[*]}"
  "${as_root[@]}" apt-get update -qq || echo "Not all package lists could be refreshed; going on with those there are." >&2
  # A package that is in conflict with one of ours is somebody's choice, not ours to remove.
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends --no-remove -o Dpkg::Use-Pty=0 "${missing[@]}" >/dev/null ||
    fail "installing ${missing[*]} failed"
}

# Configures a preset if that was never done or the presets have changed since. Here and below a step that fails says
# so itself: a caller that asks for the status has switched the shell's own check off.
configure_preset() {
  local preset=$1
  if [ ! -f "build/$preset/build.ninja" ] || [ CMakePresets.json -nt "build/$preset/build.ninja" ]; then
    cmake --preset "$preset" || return
    touch "build/$preset/build.ninja"
  fi
}

# Configures and builds a preset, or only the named targets of it.
build_preset() {
  local preset=$1 target targets=()
  shift
  configure_preset "$preset" || return
  for target in "$@"; do
    targets+=(--target "$target")
  done
  cmake --build "build/$preset" --parallel "$(nproc)" "${targets[@]}"
}

# Runs the tests of a built preset, all of them or those of the named tiers, and prints the counts as its last line.
test_preset() {
  local preset=$1 status=0 labels
  shift
  local results=$PWD/build/$preset/test-results.xml selection=()
  if [ $# -gt 0 ]; then
    labels=$(IFS='|' && echo "$*")
    selection=(--label-regex "^($labels)\$")
  fi
  rm -f "$results"
  ctest --preset "$preset" "${selection[@]}" --output-junit "$results" \
    --test-output-size-passed 1048576 --test-output-size-failed 1048576 || status=$?
  [ -f "$results" ] || fail "the tests did not run"
  python3 .ci/count-results "$results" || status=1
  return "$status"
}
