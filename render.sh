#!/usr/bin/env bash
# Renders a picture, a sequence or a video with a look, from a fresh clone on: installs and builds
# what is missing, then runs the host program, with ffmpeg before and behind it for video.
set -euo pipefail

usage() {
  cat <<'USAGE'
Usage: ./render.sh INPUT OUTPUT --look LOOK [OPTION...]

Pictures (PNG, JPEG, TIFF, BMP), numbered sequences (shot_%04d.png), Y4M and raw BGRA go straight
through the host program; anything else is decoded and encoded by ffmpeg, in 8 bits, keeping size,
rate, aspect, sound and colour tags.

Examples:
  ./render.sh samples/images/coffee.png out.png --look samples/looks/warm_print.cube
  ./render.sh clip.mp4 graded.mp4 --look samples/looks/cool_night.cc
  ./render.sh clip.mov frames_%04d.png --look warm.cube --frames 1-24
  ./render.sh shot_%04d.png shot.mp4 --look warm.cube --fps 24

The options are those of the host program:

USAGE
}

fail() { # WHAT WHY REMEDY [EXIT CODE]
  echo "render.sh: $1: $2; $3" >&2
  exit "${4:-1}"
}

note() {
  [ -n "$quiet" ] || echo "render.sh: $*" >&2
}

root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
build=$(realpath -m "${GLAZEL_BUILD:-$root/build/release}") # or an own one
work=$(mktemp -d)
partial=
cleanup() {
  rm -rf "$work"
  [ -z "$partial" ] || rm -f "$partial"
}
trap cleanup EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

# Brings the build up to date; says nothing more unless that fails.
prepare() {
  "$root/setup.sh" >&2 || exit 1 # it has said what is missing
  mkdir -p "$root/build"
  [ -e "$build/build.ninja" ] ||
    echo "render.sh: building for the first time, which takes some minutes" >&2
  (
    flock 9 # two renders at once must not build at once
    { [ -e "$build/build.ninja" ] || (cd "$root" && cmake --preset release -B "$build"); } &&
      cmake --build "$build" --target glazelhost GlazelDX_x64 GZ3Renderer_x64
  ) 9>"$root/build/render.lock" >"$work/build.log" 2>&1 || {
    cat "$work/build.log" >&2
    fail build "it failed, see above" "mend that and run again"
  }
}

extension() {
  local name=${1##*/}
  case $name in
    *.*) printf '%s' "${name##*.}" | tr '[:upper:]' '[:lower:]' ;;
  esac
}

# Whether the host program itself reads and writes such a file.
is_native() {
  case $1 in
    - | *%*) return 0 ;;
  esac
  case $(extension "$1") in
    png | jpg | jpeg | tif | tiff | bmp | y4m | bgra | raw) return 0 ;;
  esac
  return 1
}

# Value of a host option in "$@", given as "--name VALUE" or "--name=VALUE"; empty without one.
option() {
  local name=$1
  shift
  while [ $# -gt 0 ]; do
    case $1 in
      "$name") printf '%s' "${2:-}" && return ;;
      "$name="*) printf '%s' "${1#*=}" && return ;;
    esac
    shift
  done
}

has_flag() {
  local name=$1 word
  shift
  for word in "$@"; do
    [ "$word" != "$name" ] || return 0
  done
  return 1
}

probe() { # SECTION KEYS: lines KEY=VALUE of the input's first picture stream or of its container
  ffprobe -v error -select_streams v:0 -show_entries "$1=$2" -of default=noprint_wrappers=1 \
    "file:$input"
}

declare -A video=()
# Fills `video` with what ffprobe says of the input.
probe_video() {
  [ -e "$input" ] || fail "$input" "there is no such file" "check the path"
  local lines key value
  lines=$(probe stream width,height,pix_fmt,color_range,color_space,color_transfer,color_primaries,r_frame_rate,avg_frame_rate,nb_frames,duration,start_time,field_order 2>"$work/probe.log") ||
    fail "$input" "ffmpeg cannot read it: $(head -n 1 "$work/probe.log")" "check the file"
  while IFS="=" read -r key value; do
    [ -n "${video[$key]:-}" ] || video[$key]=$value # a program lists its streams once more
  done <<<"$lines"
  [ -n "${video[width]:-}" ] || fail "$input" "it holds no picture" "check the file"
  case ${video[pix_fmt]:-} in
    *f16* | *f32*)
      fail "$input" "it holds floats, usually linear light, which the way through ffmpeg would cut to 8 bits" \
        "convert it to a TIFF of 32-bit floats, which is read as what it is"
      ;;
  esac
  video[container_start]=$(probe format start_time | cut -d= -f2)
  video[container_duration]=$(probe format duration | cut -d= -f2)
}

# Its numbers have a decimal point, whatever the user's language: ffmpeg takes no other.
calculate() { # PROGRAM's variables and text
  LC_ALL=C awk "$@"
}

known() { # value of `video`, or nothing when ffprobe does not know it
  case ${video[$1]:-} in
    '' | N/A | unknown | reserved | 0/0) ;;
    *) printf '%s' "${video[$1]}" ;;
  esac
}

# Sets `matrix` and `range` (of the pictures between the processes), `matrix_in` and `range_in` (as
# the scaler is told to read the input), `range_out` (of the encoded video).
choose_colours() {
  local format=${video[pix_fmt]:-}
  matrix=$(option --matrix "$@")
  range=$(option --range "$@")
  case $format in
    gbr* | rgb* | bgr* | argb* | abgr* | 0rgb* | 0bgr* | pal8 | bayer* | x2rgb* | x2bgr*)
      # All codes are used on the way; video players expect limited range in the end.
      matrix=${matrix:-bt709} matrix_in=auto
      range=${range:-full} range_in=auto range_out=tv
      return
      ;;
  esac
  if [ -z "$matrix" ]; then
    case $(known color_space) in
      bt709) matrix=bt709 ;;
      smpte170m | bt470bg) matrix=bt601 ;;
      bt2020nc) matrix=bt2020 ;;
      '') if [ "${video[width]}" -ge 1280 ] || [ "${video[height]}" -ge 720 ]; then matrix=bt709; else matrix=bt601; fi ;;
      *) matrix=bt709 matrix_in=auto ;; # converted
    esac
  fi
  matrix_in=${matrix_in:-$matrix}
  if [ -z "$range" ]; then
    case $(known color_range)$format in
      pc* | yuvj*) range=full ;;
      *) range=limited ;;
    esac
  fi
  range_in=$(scaler_range "$range")
  range_out=$range_in
}

scaler_range() {
  case $1 in
    full) echo pc ;;
    *) echo tv ;;
  esac
}

# Whether the rate changes within the video: its frames then get evenly spaced, to keep the sound.
is_variable_rate() {
  calculate -v r="$(known r_frame_rate)" -v a="$(known avg_frame_rate)" 'BEGIN {
    split(r, x, "/"); split(a, y, "/")
    if (!(x[2] > 0) || !(y[2] > 0) || !(y[1] > 0)) exit 1
    ratio = (x[1] / x[2]) / (y[1] / y[2])
    exit !(ratio < 0.98 || ratio > 1.02)
  }'
}

is_interlaced() {
  case $(known field_order) in
    tt | tb | bb | bt) return 0 ;;
  esac
  return 1
}

expected_frames() {
  local count
  count=$(known nb_frames)
  if [ -z "$count" ]; then
    count=$(calculate -v d="$(known duration)" -v c="$(known container_duration)" -v a="$(known avg_frame_rate)" 'BEGIN {
      split(a, y, "/"); if (!(d > 0)) d = c
      if (d > 0 && y[2] > 0) printf "%d", d * y[1] / y[2] + 0.5
    }')
  fi
  [ "${count:-0}" -le 0 ] || printf '%s' "$count"
}

# Ends the host without a word of its own, since somebody else has something to say.
stop_host() {
  local tries=0
  until [ -s "$work/host.pid" ] || [ $tries -ge 250 ]; do
    sleep 0.02
    tries=$((tries + 1))
  done
  kill -TERM "$(cat "$work/host.pid")" 2>/dev/null || true
}

# What ffmpeg complained of, without its addresses and without what a closed pipe behind it makes
# it say.
complaints() {
  sed -e 's/ @ 0x[0-9a-f]*\]/]/' "$1" | grep -v -e 'Broken pipe' -e '^Conversion failed' -e 'Error writing trailer' \
    -e 'Error closing file' -e 'Error muxing a packet' || true
}

decode() {
  local rate=(-fps_mode passthrough) field='setfield=prog'
  if is_variable_rate; then
    rate=(-fps_mode cfr -r "$(known avg_frame_rate)")
  fi
  local code=0
  ffmpeg -nostdin -v error -i "file:$input" -map 0:v:0 "${rate[@]}" \
    -vf "scale=interl=-1:in_range=$range_in:out_range=$(scaler_range "$range"):in_color_matrix=$matrix_in:out_color_matrix=$matrix:flags=bicubic+accurate_rnd+full_chroma_int,format=yuv444p,$field" \
    -f yuv4mpegpipe -strict -1 - 2>"$work/decode.log" || code=$?
  complaints "$work/decode.log" >"$work/decode.complaints"
  # This end of the pipe is still open: the host does not take a failure for the end of the video.
  if [ -s "$work/decode.complaints" ] && [ -z "$tolerant" ]; then
    stop_host
  fi
  return "$code"
}

host() {
  echo $BASHPID >"$work/host.pid"
  exec "$root/cmake/wine-run.sh" "$build/bin/glazelhost.exe" render "$@" 2>&3
}

# Which codec the container gets; none means ffmpeg's own choice.
picture_codec() {
  case $(extension "$output") in
    mp4 | m4v | mov | mkv | ts | mts | m2ts | avi | flv) echo -c:v libx264 -preset medium -crf 16 ;;
    webm) echo -c:v libvpx-vp9 -row-mt 1 -crf 20 -b:v 0 ;;
  esac
}

# One -c:a:N for each sound stream of the input: copied where the container takes it, else AAC.
sound_codecs() {
  local index=0 codec
  while read -r codec; do
    case $(extension "$output"):$codec in
      mkv:* | mp4:aac | mp4:mp3 | mp4:ac3 | mp4:eac3 | mp4:alac | mp4:opus | m4v:aac | m4v:ac3 | \
        mov:aac | mov:mp3 | mov:ac3 | mov:eac3 | mov:alac | mov:pcm_* | webm:opus | webm:vorbis | \
        ts:aac | ts:mp3 | ts:mp2 | ts:ac3 | avi:mp3 | avi:ac3 | avi:aac | avi:pcm_s16le | flv:aac | flv:mp3)
        echo "-c:a:$index copy"
        ;;
      webm:*) echo "-c:a:$index libopus -b:a:$index 192k" ;;
      *) echo "-c:a:$index aac -b:a:$index 256k" ;;
    esac
    index=$((index + 1))
  done < <(ffprobe -v error -select_streams a -show_entries stream=codec_name \
    -of default=noprint_wrappers=1:nokey=1 "file:$input")
}

# Pixel format of the output: the input's chroma, unless the size cannot be halved.
picture_format() { # WIDTH HEIGHT
  local format=yuv420p
  case ${video[pix_fmt]:-} in
    yuv*444* | gbr*) format=yuv444p ;;
    yuv*422*) format=yuv422p ;;
  esac
  case $format in
    yuv420p) [ $(($1 % 2 + $2 % 2)) -eq 0 ] || format=yuv444p ;;
    yuv422p) [ $(($1 % 2)) -eq 0 ] || format=yuv444p ;;
  esac
  echo $format
}

# The size that the host's stream begins with; the header is given on before the rest.
peek_size() {
  local word
  IFS= read -r y4m_header || return 1
  for word in $y4m_header; do
    case $word in
      W*) y4m_width=${word#W} ;;
      H*) y4m_height=${word#H} ;;
    esac
  done
}

tags() { # tags that ffprobe found in the input
  local value
  value=$(known color_primaries) && [ -z "$value" ] || echo -color_primaries "$value"
  value=$(known color_transfer) && [ -z "$value" ] || echo -color_trc "$value"
  value=$(known color_space)
  case $value in
    '' | gbr) ;;
    bt709 | smpte170m | bt470bg | bt2020nc) echo -colorspace "$value" ;;
    *) echo -colorspace bt709 ;;
  esac
  echo -color_range "$range_out"
}

encode() {
  local y4m_header='' y4m_width=0 y4m_height=0
  peek_size || return 0 # the host wrote nothing, and has said why
  local codec=() filter second=() colours=() sound=() words offset
  read -r -a codec <<<"$(picture_codec)"
  filter=scale=flags=bicubic+accurate_rnd+full_chroma_int
  if [ -n "$decoding" ]; then
    filter+=:in_range=$(scaler_range "$range"):out_range=$range_out:in_color_matrix=$matrix:out_color_matrix=$matrix
    read -r -d '' -a colours < <(tags) || true
    if is_interlaced; then
      # Fields stay fields: their chroma is halved apart, and the encoder is told of them.
      case $(known field_order) in
        tt | tb) filter="setfield=tff,$filter:interl=1" ;;
        *) filter="setfield=bff,$filter:interl=1" ;;
      esac
      codec+=(-flags +ilme+ildct)
    fi
    if [ -n "$with_sound" ]; then
      second=(-i "file:$input")
      read -r -d '' -a words < <(sound_codecs) || true
      sound=(-map '1:a?' "${words[@]}" -map_metadata 1 -map_chapters 1)
    fi
  elif [ "$(extension "$input")" != y4m ]; then
    filter+=:in_range=tv:out_range=tv:in_color_matrix=bt709:out_color_matrix=bt709
    colours=(-color_primaries bt709 -color_trc iec61966-2-1 -colorspace bt709 -color_range tv)
  fi
  case $(extension "$output") in
    mp4 | m4v | mov) sound+=(-movflags +faststart) ;;
  esac
  local format
  format=$(picture_format "$y4m_width" "$y4m_height")
  if [ ${#codec[@]} -gt 0 ]; then
    filter+=,format=$format
  fi
  offset=$(calculate -v v="$(known start_time)" -v c="$(known container_start)" 'BEGIN { printf "%.6f", v - c }')
  local code=0
  { printf '%s\n' "$y4m_header" && cat; } 2>/dev/null |
    ffmpeg -nostdin -v error -itsoffset "$offset" -f yuv4mpegpipe -i pipe:0 "${second[@]}" \
      -fps_mode passthrough -map 0:v "${sound[@]}" "${codec[@]}" -vf "$filter" "${colours[@]}" -y "file:$partial" \
      2>"$work/encode.log" || code=$?
  if [ "$code" -ne 0 ]; then
    stop_host
  fi
  return "$code"
}

# Ends with the host's own code when the host has said what is wrong, and otherwise says it.
judge() { # EXIT CODES of decoder, host and encoder
  local stopped=143 killed=137
  if [ "$2" -eq $killed ]; then
    fail "$output" "the host program was killed" "see that memory is free, and run it again" $killed
  fi
  if [ "$2" -ne 0 ] && [ "$2" -ne $stopped ]; then
    exit "$2"
  fi
  if [ -s "$work/decode.complaints" ] && [ -z "$tolerant" ]; then
    fail "$input" "it cannot be decoded whole: $(head -n 1 "$work/decode.complaints")" \
      "check the file, or give --skip-bad-frames to render what can be read"
  fi
  if [ "$3" -ne 0 ]; then
    fail "$output" "it cannot be encoded: $(complaints "$work/encode.log" | head -n 1)" \
      "choose another kind of file, or check the disk"
  fi
  [ "$2" -eq 0 ] || fail "$output" "the render was stopped" "run it again"
}

check_output() {
  local folder
  folder=$(dirname -- "$output")
  [ -d "$folder" ] || fail "$output" "the folder $folder does not exist" "create it or choose another"
  [ ! -d "$output" ] || fail "$output" "it is a folder" "name a file"
  [ ! -e "$output" ] || has_flag --overwrite "$@" ||
    fail "$output" "it exists already" "give --overwrite to replace it, or choose another name"
}

# Through ffmpeg at one end or at both.
render_video() {
  local places=("$input" "$output") extra=() expected
  if [ -n "$decoding" ]; then
    probe_video
    choose_colours "$@"
    places[0]=-
    extra+=(--input-format y4m)
    [ -n "$(option --range "$@")" ] || extra+=(--range "$range")
    [ -n "$(option --matrix "$@")" ] || extra+=(--matrix "$matrix")
    expected=$(expected_frames)
    [ -z "$expected" ] || [ -n "$(option --expect "$@")" ] || extra+=(--expect "$expected")
    if [ -n "$encoding" ] && [ -n "$(option --frames "$@")$(option --fps "$@")" ]; then
      note "$output: without sound, which would not fit the chosen frames or rate"
      with_sound=
    fi
  fi
  if [ -n "$encoding" ]; then
    check_output "$@"
    partial=$(dirname -- "$output")/.$(basename -- "$output").$$.$(extension "$output")
    places[1]=-
    extra+=(--output-format y4m)
    [ -n "$(option --chroma "$@")" ] || extra+=(--chroma 444)
    if [ -z "$decoding" ] && [ "$(extension "$input")" != y4m ]; then
      extra+=(--range limited --matrix bt709)
    fi
  fi

  local codes
  set +e
  { # the shell would tell of a host that was stopped; the host's own words go through 3
    if [ -z "$encoding" ]; then
      decode | host "${places[@]}" "$@" "${extra[@]}"
      codes=("${PIPESTATUS[@]}" 0)
    elif [ -z "$decoding" ]; then
      host "${places[@]}" "$@" "${extra[@]}" | encode
      codes=(0 "${PIPESTATUS[@]}")
    else
      decode | host "${places[@]}" "$@" "${extra[@]}" | encode
      codes=("${PIPESTATUS[@]}")
    fi
  } 3>&2 2>/dev/null
  set -e
  judge "${codes[@]}"

  if [ -n "$encoding" ]; then
    mv -f -- "$partial" "$output"
    note "$output: written"
  fi
  if [ -s "$work/decode.complaints" ]; then
    fail "$input" "not all of it could be decoded: $(head -n 1 "$work/decode.complaints")" \
      "the rest was rendered; check the file"
  fi
}

if [ $# -eq 0 ]; then
  usage >&2
  exit 2
fi
if has_flag --help "$@" || has_flag -h "$@"; then
  prepare
  usage
  cleanup
  exec "$root/cmake/wine-run.sh" "$build/bin/glazelhost.exe" render --help
fi
case ${1:-}:${2:-} in
  --*:* | *:--* | *:) fail "command line" "INPUT and OUTPUT come first" "see ./render.sh --help" 2 ;;
esac

input=$1
output=$2
shift 2
quiet=
tolerant=
with_sound=yes
if has_flag --quiet "$@" || [ "$(option --progress "$@")" = none ] || [ "$(option --progress "$@")" = json ]; then
  quiet=yes
fi
if has_flag --skip-bad-frames "$@"; then
  tolerant=yes
fi
decoding=
encoding=
is_native "$input" || decoding=yes
is_native "$output" || encoding=yes

prepare
if [ -n "$decoding$encoding" ]; then
  render_video "$@"
else
  cleanup
  exec "$root/cmake/wine-run.sh" "$build/bin/glazelhost.exe" render "$input" "$output" "$@"
fi
