# Sourced by ./run, ./test, benchmarks/beside_peers and tools/desktops: sees to it that the packages of
# packaging/debian-packages are installed.

# velicor_packages TOP [PART…]: what everybody needs, and the parts asked for.
velicor_packages() {
  sed 's/#.*//' "$1/packaging/debian-packages" |
    awk -v parts=" ${*:2} " '/^\[/ { skip = !index(parts, " " substr($1, 2, length($1) - 2) " "); next }
                             NF && !skip { print $1 }'
}

# velicor_install_packages TOP [PART…]: installs what is missing, as root or through sudo; without either, prints the
# one line to run and fails.
velicor_install_packages() {
  local top=$1 package missing=()
  if ! command -v apt-get >/dev/null; then
    echo "Velicor's packages go by their Debian names; install what $top/packaging/debian-packages lists." >&2
    return 1
  fi
  for package in $(velicor_packages "$@"); do
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
  done
  [ ${#missing[@]} -gt 0 ] || return 0

  local install=(apt-get install -y --no-install-recommends "${missing[@]}")
  local as=()
  if [ "$(id -u)" != 0 ]; then
    if ! command -v sudo >/dev/null; then
      echo "Velicor needs some packages first. As root, run:" >&2
      echo "  apt-get update && ${install[*]}" >&2
      return 1
    fi
    as=(sudo)
  fi
  echo "Installing ${#missing[@]} packages: ${missing[*]}"
  "${as[@]}" apt-get update -q && "${as[@]}" env DEBIAN_FRONTEND=noninteractive "${install[@]}"
}
