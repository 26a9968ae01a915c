#!/usr/bin/env bash
# Regenerates the 16x16 menu and toolbar icons in resources/images/.
#
# The icons come from the Tango icon theme (http://tango.freedesktop.org), which its authors released
# into the public domain (see /usr/share/doc/tango-icon-theme/copyright). Where Tango has no fitting
# icon we draw one here in the Tango palette, or put a small badge on a Tango icon. The PNGs are
# committed, so building Chromaxis never needs this script or the theme.
#
# Usage: tools/make-icons.sh [TANGO_DIR]
#   TANGO_DIR defaults to /usr/share/icons/Tango (Debian package tango-icon-theme). Without installing:
#     apt-get download tango-icon-theme && dpkg -x tango-icon-theme_*.deb tango
#     tools/make-icons.sh tango/usr/share/icons/Tango
# Needs ImageMagick 6 (convert).
set -euo pipefail

TANGO=${1:-/usr/share/icons/Tango}
OUT=$(cd "$(dirname "$0")/../resources/images" && pwd)
WORK=$(mktemp -d)
trap 'rm -rf "$WORK"' EXIT

command -v convert >/dev/null || { echo "make-icons: ImageMagick's convert is needed" >&2; exit 1; }
[ -d "$TANGO/16x16" ] || { echo "make-icons: no Tango theme at $TANGO" >&2; exit 1; }

# Tango palette
BUTTER=("#fce94f" "#edd400" "#c4a000")
ORANGE=("#fcaf3e" "#f57900" "#ce5c00")
CHOC=("#e9b96e" "#c17d11" "#8f5902")
GREEN=("#8ae234" "#73d216" "#4e9a06")
SKY=("#729fcf" "#3465a4" "#204a87")
RED=("#ef2929" "#cc0000" "#a40000")
ALU=("#eeeeec" "#d3d7cf" "#babdb6" "#888a85" "#555753" "#2e3436")

# The same input always gives the same bytes, so regenerating leaves unchanged icons untouched in git.
png() { # png SRC... OUT: like convert, but writes a stripped 32-bit PNG
    local args=("$@") out=${*: -1}
    convert "${args[@]:0:$#-1}" -strip -define png:exclude-chunks=date,time PNG32:"$out"
}

tango() { # tango NAME [SIZE]: path of a Tango icon
    local size=${2:-16} f
    for f in "$TANGO/${size}x${size}"/*/"$1.png"; do
        [ -e "$f" ] && { echo "$f"; return; }
    done
    echo "make-icons: Tango icon $1 (${size}x${size}) not found" >&2
    exit 1
}

# draw OUT W H DRAW-OPTIONS...: draws at four times the size and shrinks, so edges are smoothed
# evenly; coordinates are in quarter pixels (4 = one pixel).
draw() {
    local out=$1 w=$2 h=$3
    shift 3
    png -size "$((w * 4))x$((h * 4))" xc:none "$@" -filter box -resize "${w}x${h}" "$out"
}

# pixels OUT W H DRAW-OPTIONS...: draws pixel-exact, without smoothing, for tiny badges.
pixels() {
    local out=$1 w=$2 h=$3
    shift 3
    png -size "${w}x${h}" xc:none +antialias "$@" "$out"
}

# badge BASE BADGE X Y OUT: lays BADGE over BASE with its top-left corner at X,Y, inside a thin light
# rim so that it stands out from the icon beneath.
badge() {
    png "$1" \( "$2" -bordercolor none -border 1 \( +clone -alpha extract -morphology dilate square:1 \
        -background '#ffffffd0' -alpha shape \) +swap -compose over -composite \) \
        -geometry "+$(($3 - 1))+$(($4 - 1))" -compose over -composite "$5"
}

# arc_arrow CX CY R FROM TO WIDTH HEAD: filled polygons, in quarter pixels, for an arrow WIDTH thick
# running clockwise along a circle from angle FROM to angle TO (degrees, clockwise from 3 o'clock), its
# head HEAD long and HEAD wide. Prints the band, the head, then a smaller head for its inside, one to a
# line. (Filled shapes, because ImageMagick 6 strokes thick curves unreliably.)
arc_arrow() {
    awk -v cx="$1" -v cy="$2" -v r="$3" -v a0="$4" -v a1="$5" -v w="$6" -v h="$7" 'BEGIN {
        d = atan2(0, -1) / 180
        band = "polygon"
        for (i = 0; i <= 32; i++) {
            a = (a0 + (a1 - a0) * i / 32) * d
            band = band sprintf(" %.1f,%.1f", cx + (r + w / 2) * cos(a), cy + (r + w / 2) * sin(a))
        }
        for (i = 32; i >= 0; i--) {
            a = (a0 + (a1 - a0) * i / 32) * d
            band = band sprintf(" %.1f,%.1f", cx + (r - w / 2) * cos(a), cy + (r - w / 2) * sin(a))
        }
        print band
        ex = cx + r * cos(a1 * d); ey = cy + r * sin(a1 * d)
        tx = -sin(a1 * d); ty = cos(a1 * d); nx = cos(a1 * d); ny = sin(a1 * d)
        px[0] = ex + tx * h; py[0] = ey + ty * h
        px[1] = ex + nx * h / 2; py[1] = ey + ny * h / 2
        px[2] = ex - nx * h / 2; py[2] = ey - ny * h / 2
        mx = (px[0] + px[1] + px[2]) / 3; my = (py[0] + py[1] + py[2]) / 3
        for (k = 1; k >= 0.5; k -= 0.5) {
            line = "polygon"
            for (i = 0; i < 3; i++)
                line = line sprintf(" %.1f,%.1f", mx + (px[i] - mx) * k, my + (py[i] - my) * k)
            print line
        }
    }'
}

copy() { png "$(tango "$1")" "$OUT/$2"; }

# ---- badges --------------------------------------------------------------------------------------

# A palette: four colour cells in a dark frame.
pixels "$WORK/palette.png" 8 8 -fill "${ALU[5]}" -draw 'rectangle 0,0 7,7' \
    -fill "${RED[0]}" -draw 'rectangle 1,1 3,3' -fill "${BUTTER[0]}" -draw 'rectangle 4,1 6,3' \
    -fill "${GREEN[1]}" -draw 'rectangle 1,4 3,6' -fill "${SKY[0]}" -draw 'rectangle 4,4 6,6'

# A picture: sky, sun and a green hill in a frame.
pixels "$WORK/image.png" 9 8 -fill "${ALU[4]}" -draw 'rectangle 0,0 8,7' \
    -fill "${SKY[0]}" -draw 'rectangle 1,1 7,6' -fill "${BUTTER[0]}" -draw 'rectangle 5,2 6,3' \
    -fill "${GREEN[1]}" -draw 'polygon 1,6 1,4 3,3 5,5 7,5 7,6' -fill "${GREEN[2]}" -draw 'point 3,3'

# A red disc with a white cross, for closing.
draw "$WORK/close.png" 8 8 -fill "${RED[2]}" -draw 'circle 16,16 16,1' -fill "${RED[1]}" \
    -draw 'circle 16,16 16,4' -fill white -draw 'polygon 11.8,8.2 23.8,20.2 20.2,23.8 8.2,11.8' \
    -draw 'polygon 23.8,11.8 11.8,23.8 8.2,20.2 20.2,8.2'

# A die showing five.
pixels "$WORK/dice.png" 9 9 -fill "${ALU[5]}" -draw 'rectangle 1,0 7,8 rectangle 0,1 8,7' \
    -fill white -draw 'rectangle 1,1 7,7' -fill "${ALU[5]}" \
    -draw 'point 2,2 point 6,2 point 4,4 point 2,6 point 6,6'

# A red minus sign.
pixels "$WORK/minus.png" 9 5 -fill "${RED[2]}" -draw 'rectangle 1,0 7,4 rectangle 0,1 8,3' \
    -fill "${RED[0]}" -draw 'rectangle 1,1 7,3'

# A pencil, point down to the left.
draw "$WORK/pencil.png" 9 9 -strokewidth 3 -stroke "${ORANGE[2]}" -fill "${ORANGE[0]}" \
    -draw 'polygon 14,26 32,8 26,2 8,20' -stroke "${CHOC[2]}" -fill "${CHOC[0]}" \
    -draw 'polygon 14,26 8,20 3,33' -stroke none -fill "${ALU[5]}" -draw 'polygon 2,34 7,28 4,27'

# A blue floppy disk.
pixels "$WORK/disk.png" 9 9 -fill "${SKY[2]}" -draw 'rectangle 0,0 8,8' \
    -fill "${SKY[1]}" -draw 'rectangle 1,1 7,7' -fill "${ALU[1]}" -draw 'rectangle 2,1 6,3' \
    -fill "${ALU[4]}" -draw 'rectangle 5,1 5,2' -fill white -draw 'rectangle 2,5 6,7'

# Green arrows, back and forward.
draw "$WORK/prev.png" 9 9 -strokewidth 3 -stroke "${GREEN[2]}" -fill "${GREEN[1]}" \
    -draw 'polygon 2,18 17,3 17,11 34,11 34,25 17,25 17,33'
png "$WORK/prev.png" -flop "$WORK/next.png"

# A green circular arrow, for reloading.
mapfile -t outer < <(arc_arrow 20 20 11 135 360 9 16)
mapfile -t inner < <(arc_arrow 20 20 11 140 360 3 0)
draw "$WORK/refresh.png" 10 10 -fill "${GREEN[2]}" -draw "${outer[0]}" -draw "${outer[1]}" \
    -fill "${GREEN[1]}" -draw "${outer[2]}" -fill "${GREEN[0]}" -draw "${inner[0]}"

# ---- drawn bases ---------------------------------------------------------------------------------

# A database: a blue cylinder of stacked disks.
draw "$WORK/db.png" 16 16 -strokewidth 4 -stroke "${SKY[2]}" -fill "${SKY[0]}" \
    -draw 'path "M 8,14 L 8,48 A 24,8 0 0 0 56,48 L 56,14 Z"' \
    -fill none -stroke "${SKY[1]}" -draw 'path "M 8,26 A 24,8 0 0 0 56,26"' \
    -draw 'path "M 8,37 A 24,8 0 0 0 56,37"' \
    -stroke "${SKY[2]}" -fill '#c4d8ef' -draw 'ellipse 32,14 24,8 0,360'

# A stack of three pages, for batch work.
draw "$WORK/pages.png" 16 16 -strokewidth 4 -stroke "${ALU[3]}" -fill "${ALU[1]}" \
    -draw 'rectangle 22,2 54,42' -fill "${ALU[0]}" -draw 'rectangle 14,10 46,50' \
    -fill white -draw 'rectangle 6,18 38,58' -stroke "${ALU[2]}" \
    -draw 'line 14,30 30,30 line 14,38 30,38 line 14,46 26,46'

# Mirror left to right: a filled shape, a dashed axis and its outlined reflection.
draw "$WORK/mirror.png" 16 16 -strokewidth 4 -stroke "${SKY[2]}" -fill "${SKY[1]}" \
    -draw 'polygon 4,54 26,54 26,10' -fill '#c4d8ef' -draw 'polygon 60,54 38,54 38,10' \
    -stroke "${ALU[4]}" -draw 'line 32,2 32,8 line 32,16 32,22 line 32,30 32,36 line 32,44 32,50 line 32,58 32,62'

# Rotate clockwise: an arrow most of the way round a circle.
mapfile -t outer < <(arc_arrow 32 32 18 135 360 11 22)
mapfile -t inner < <(arc_arrow 32 32 18 138 360 4 0)
draw "$WORK/rotate.png" 16 16 -fill "${SKY[2]}" -draw "${outer[0]}" -draw "${outer[1]}" \
    -fill "${SKY[1]}" -draw "${outer[2]}" -fill "${SKY[0]}" -draw "${inner[0]}"

# A strip of film: two frames with a ball moving between them.
pixels "$WORK/film.png" 16 16 -fill "${ALU[5]}" -draw 'rectangle 0,2 15,13' -fill "${ALU[1]}" \
    -draw 'rectangle 1,3 2,3 rectangle 5,3 6,3 rectangle 9,3 10,3 rectangle 13,3 14,3' \
    -draw 'rectangle 1,12 2,12 rectangle 5,12 6,12 rectangle 9,12 10,12 rectangle 13,12 14,12' \
    -fill "${SKY[0]}" -draw 'rectangle 1,5 6,10 rectangle 9,5 14,10' -fill "${BUTTER[0]}" \
    -draw 'rectangle 2,8 3,9 rectangle 12,6 13,7'

# ---- the icons -----------------------------------------------------------------------------------

copy document-new new16x16.png
copy document-open open16x16.png
copy document-save save16x16.png
copy document-save-as saveas16x16.png
copy system-log-out exit16x16.png
copy edit-undo undo16x16.png
copy edit-redo redo16x16.png
copy edit-cut cut16x16.png
copy edit-copy copy16x16.png
copy edit-paste paste16x16.png
copy edit-delete delete16x16.png
copy accessories-text-editor edit16x16.png
copy system-search magnify16x16.png
copy help-browser help16x16.png
copy go-home nav_home16x16.png
copy go-previous nav_back16x16.png
copy go-next nav_fore16x16.png
copy media-record record16x16.png

# Files of one kind: the badge sits bottom right, except on "save as", whose text cursor is there and
# is all that tells it from "save".
for action in open save saveas; do
    case $action in
        open) base=document-open x=7 ;;
        save) base=document-save x=7 ;;
        saveas) base=document-save-as x=0 ;;
    esac
    badge "$(tango "$base")" "$WORK/image.png" "$x" 8 "$OUT/${action}_image16x16.png"
    badge "$(tango "$base")" "$WORK/palette.png" "$((x > 0 ? 8 : 0))" 8 "$OUT/${action}_palette16x16.png"
done
badge "$(tango image-x-generic)" "$WORK/close.png" 8 8 "$OUT/close_image16x16.png"

png "$WORK/db.png" "$OUT/db16x16.png"
badge "$WORK/db.png" "$WORK/dice.png" 7 7 "$OUT/db_random16x16.png"
badge "$WORK/db.png" "$WORK/prev.png" 6 6 "$OUT/db_prev16x16.png"
badge "$WORK/db.png" "$WORK/next.png" 6 6 "$OUT/db_next16x16.png"
badge "$WORK/db.png" "$WORK/disk.png" 7 7 "$OUT/db_save16x16.png"
badge "$WORK/db.png" "$WORK/minus.png" 7 11 "$OUT/db_remove16x16.png"
badge "$WORK/db.png" "$WORK/pencil.png" 7 7 "$OUT/db_rename16x16.png"
badge "$WORK/db.png" "$WORK/refresh.png" 6 6 "$OUT/db_reload16x16.png"

badge "$WORK/pages.png" "$WORK/palette.png" 8 8 "$OUT/chromaxis_batchconvert16x16.png"
badge "$WORK/pages.png" "$WORK/image.png" 7 8 "$OUT/chromaxis_batchapply16x16.png"

png -size 16x16 xc:none "$OUT/empty16x16.png"

png "$WORK/mirror.png" "$OUT/shape_mirror_horizontally16x16.png"
png "$WORK/mirror.png" -rotate 90 "$OUT/shape_mirror_vertically16x16.png"
png "$WORK/rotate.png" "$OUT/shape_rotate_cw16x16.png"
png "$WORK/rotate.png" -flop "$OUT/shape_rotate_ccw16x16.png"

png "$WORK/film.png" "$OUT/anim16x16.png"

# Zoom in and out: a plus or minus drawn in the magnifier's lens, centred on pixel 6,6.
png "$(tango system-search)" +antialias -fill "${SKY[2]}" -draw 'rectangle 3,6 9,6 rectangle 6,3 6,9' \
    "$OUT/magnify_plus16x16.png"
png "$(tango system-search)" +antialias -fill "${SKY[2]}" -draw 'rectangle 3,6 9,6' \
    "$OUT/magnify_minus16x16.png"
