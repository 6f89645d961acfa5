# Sourced by ./run, ./test, ./package, benchmarks/beside_peers and tools/desktops: installs sections of
# packaging/debian-packages.

# velicor_packages TOP SECTION…: the lines of these sections, one a line, alternatives without blanks: "new|old".
velicor_packages() {
  sed 's/#.*//' "$1/packaging/debian-packages" | awk -v sections=" ${*:2} " '
    /^\[/ { sub(/^\[/, ""); sub(/\].*/, ""); wanted = index(sections, " " $0 " "); known[$0] = 1; next }
    NF && wanted { gsub(/ /, ""); if (!seen[$0]++) print }
    END {
      count = split(sections, names, " ")
      for (i = 1; i <= count; ++i) if (!(names[i] in known)) { print "no section " names[i] >"/dev/stderr"; exit 1 }
    }'
}

velicor_is_installed() { [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]; }

# Reads all that it is told: with "pipefail" a reader that ends early makes a failure of the writer.
velicor_release_has() {
  apt-cache policy "$1" 2>/dev/null | awk '/^  Candidate: / { has = $2 != "(none)" } END { exit !has }'
}

# velicor_choice ALTERNATIVES: the first that this Debian release has. Without package lists nobody can tell: then the
# first that is installed, or else the first.
velicor_choice() {
  local name names
  IFS='|' read -ra names <<<"$1"
  if [ ${#names[@]} -gt 1 ]; then
    for name in "${names[@]}"; do if velicor_release_has "$name"; then echo "$name"; return; fi; done
    for name in "${names[@]}"; do if velicor_is_installed "$name"; then echo "$name"; return; fi; done
  fi
  echo "${names[0]}"
}

# velicor_missing TOP SECTION…: what of these sections is not installed.
velicor_missing() {
  local lines line package
  lines=$(velicor_packages "$@") || return 1
  for line in $lines; do
    package=$(velicor_choice "$line")
    velicor_is_installed "$package" || echo "$package"
  done
}

# velicor_install_packages TOP SECTION…: installs what is missing, as root or through sudo; without either, prints the
# one line to run and fails.
velicor_install_packages() {
  local top=$1 missing as=()
  if ! command -v apt-get >/dev/null; then
    echo "Velicor's packages go by their Debian names; install what $top/packaging/debian-packages lists." >&2
    return 1
  fi
  missing=$(velicor_missing "$@") || return 1
  [ -n "$missing" ] || return 0

  local install='apt-get install -y --no-install-recommends'
  if [ "$(id -u)" != 0 ]; then
    if ! command -v sudo >/dev/null; then
      echo "Velicor needs some packages first. As root, run:" >&2
      echo "  apt-get update && $install" $missing >&2
      return 1
    fi
    as=(sudo)
  fi
  "${as[@]}" apt-get update -q
  missing=$(velicor_missing "$@")  # the lists may be the first that this machine has
  echo "Installing $(wc -w <<<"$missing") packages:" $missing
  "${as[@]}" env DEBIAN_FRONTEND=noninteractive $install $missing
}
