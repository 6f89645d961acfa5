# Sourced by what tries Velicor in a bare Debian root. Needs root and the package mmdebstrap.

# velicor_bare_root RELEASE FOLDER [mmdebstrap arguments…]: makes the root of this release, such as trixie, in the
# folder, from the archives of Debian that this machine gets its own packages from.
velicor_bare_root() {
  local here archives
  here=$(. /etc/os-release && echo "$VERSION_CODENAME")
  # A line for each archive: "bookworm", "bookworm-updates", "bookworm-security".
  archives=$(apt-get indextargets --format 'deb $(REPO_URI) $(CODENAME) main' \
    'Created-By: Packages' 'Origin: Debian' 'Component: main' |
    sed -nE "s/ $here(-[a-z]+)? main$/ $1\1 main/p" | sort -u)
  if [ -z "$archives" ]; then
    echo "This machine's package lists name no archive of Debian: run apt-get update first." >&2
    return 1
  fi
  mmdebstrap --quiet --variant=minbase "${@:3}" "$1" "$2" - <<<"$archives"
}
