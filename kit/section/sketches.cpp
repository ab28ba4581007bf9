// Sketches of the shapes and templates for a terminal: where each parameter is measured. + marks the origin.
#include "kit/section/shapes.h"

namespace velquor {

namespace {

struct Sketch {
    const char *name, *lines;
};

constexpr Sketch SKETCHES[] = {
    {"rectangle", R"(
      .-----------.  --
     /             \  |     r: radius of the corners
    |               | |
    |       +       | h
    |               | |
     \             /  |
      '-----------'  --
    |------ b ------|
)"},
    {"circle", R"(
       .-"""-.
     .'       '.
    /           \
    |     +     |
    \           /
     '.       .'
       '-...-'
    |---- d ----|
)"},
    {"ring", R"(
         .-"""""-.
       .'  .---.  '.
      /  .'     '.  \
     |  |    +    |  |
      \  '.     .'  /
       '.  '---'  .'
         '-.....-'
     |---|           t
     |------ d ------|
)"},
    {"hollow_rectangle", R"(
     .---------------.   --
    /  .-----------.  \   |    ro: outer radius
    | /             \ |   |    ri: inner radius
    | |             | |   |
    | |      +      | |   h
    | |             | |   |
    | \             / |   |
    \  '-----------'  /   |  --
     '---------------'   --  -- t
    |------- b -------|
)"},
    {"ellipse", R"(
          ..---""---..        --
      .-'              '-.     |
     /                    \    |
    |          +           |   h
     \                    /    |
      '-.              .-'     |
          ''---..---''        --
    |--------- b ----------|
)"},
    {"triangle", R"(
                   .        --
                .'  \        |
             .'      \       |
          .'          \      h
       .'              \     |
    .'________+_________\   --
              |----|         a
    |-------- b --------|
)"},
    {"trapezoid", R"(
           |--- bt ---|
           .----------.     --
          /            \     |
        /               \    h
      /                  \   |
    /_________+___________\ --
              |-|            a
    |--------- b ---------|
)"},
    {"polygon", R"(
         .-------.
       .' .-----. '.        n: number of sides
      /  /       \  \
     |  |    +    |  |
      \  \       /  /
       '. '-----' .'  --
         '-------'    --  t
    |------- d -------|     d: through the corners
)"},
    {"concrete_t", R"(
    |------------- b -------------|
    .--------------+--------------.  --        --
    |                             |  hf         |
    '--------.           .--------'  --  --     |
              \         /                hv     |
               \       /                 --     h
               |       |                        |
               |       |                        |
               '-------'                       --
               |- bw --|
             |-|          bv
)"},
    {"box_girder", R"(
    |-------------------- b --------------------|
    .---------------------+---------------------. --   --
    |__  tr  .---------------------.   tr    ___| tc    |
       '--.__ \         tt        / __.--'        --    |
             \ \                 / /                    |
              \ \               / /                     h
          tw   \ \             / /   tw                 |
                \ '-----------' /                       |
                 \     tb      /                        |
                  '-----------'                        --
                  |--- bb ----|
             |--------- bt --------|
)"},
    {"i", R"(
    |------- b -------|
    .-----------------.  -- --
    '------.   .------'  tf  |
            ) (          --  |
            | |     r        |
            |+|              h
            | | tw           |
            ) (              |
    .------'   '------.      |
    '-----------------'     --
)"},
    {"i_sloped", R"(
    |--------- b ---------|
    .---------------------.      --  --
    '----..         ..----'  r2  tf   |
           ''-. .-''             --   |
              | |      r1             |
              |+| tw                  h
              | |                     |
           __.' '.__    slope         |
    .----''         ''----.           |
    '---------------------'          --
    |-- e --|  from a tip to where tf is measured
)"},
    {"i_welded", R"(
         |----- b -----|
         .-------------.      -- --
         '-----. .-----'      tf  |
              /| |\           --  |
               | |    a: throat   |
               |+| tw    of the   h
               | |       welds    |
              \| |/               |
    .----------' '----------. --  |
    '-----------------------' tf2 |
    |---------- b2 ---------| -- --
)"},
    {"channel", R"(
    |------ b ------|
    .---------------.  -- --
    |   .-----------'  tf  |
    |  (  r            --  |
    |  |                   |
    +  | tw                h
    |  |                   |
    |  (                   |
    |   '-----------.      |
    '---------------'     --
)"},
    {"channel_sloped", R"(
    |------ b ------|
    .---------------.  --     --
    |        __..--'  r2 tf    |
    |   .-''           --      |
    |  (  r1                   |
    +  | tw                    h
    |  (                       |
    |   '-..__                 |
    |         ''--..   slope   |
    '---------------'         --
             |-- e -|  from a tip to where tf is measured
)"},
    {"angle", R"(
    .--.             --
    |   )  r2         |
    |   |             |
    |   |             h
    |   |             |
    |   (  r1         |
    |    '--------.   |   --
    |              )  |    t
    +-------------'  --   --
    |----- b -----|
)"},
    {"tee", R"(
    |------- b -------|
    .--------+--------.  -- --
    '------.   .------'  tf  |
            ) (  r       --  |
            | |              h
            | |              |
            | | tw           |
            '-'             --
)"},
    {"z", R"(
    |----- b -----|
    .-------------.           --
    '---------.   |            |
            r  )  |            |
               |  |            h
               |+ | tw         |
               |  (  r         |
               |   '--------.  |   --
               '------------' --   -- tf
)"},
    {"cold_c", R"(
    |----- b -----|
     .-----------.   --   --
    / .---------. \   c    |
    | |         | |   |    |    r: inner radius
    | |         '-'  --    |       of the bends
    + |                    h
    | |                    |    t: thickness
    | |         .-.        |
    \ '---------' /        |
     '-----------'        --
)"},
    {"cold_z", R"(
    |------ b ------|
     .-------------.          --
    / .----------. \          |
    | | c        | |          |    r: inner radius
    '-'          | |          |       of the bends
                 |+|          h
                 | |      .-. |    t: thickness
                 | |    c | | |
                 \ '------' / |
                  '--------' --
                 |--- b2 ---|
)"},
    {"sigma", R"(
    |------- b -------|
     .---------------.      --  --
    / .------------. \      |    |
    | |            |_| c    hs   |    r: inner radius
     \ \                    --   |       of the bends
      \ \       d: recess        |
       | |  --  of the web       h    t: thickness
    +  | |  hi                   |
       | |  --                   |
      / /                        |
     / /            _            |
    | |            | |           |
    \ '------------' /           |
     '---------------'          --
)"},
    {"hat", R"(
              |----- b -----|
               .-----------.             --
              / .---------. \             |
              | |         | |             |
    r: inner  | |         | | t           h
       radius | |         | |             |
    .-.       | |         | |       .-.   |   --
    | '-------' /         \ '-------' |   |    c
    '----------'     +     '----------'  --   --
    |--- bf ---|
)"},
    {"rc_rectangle", R"(
    .---------------.  -- cover: to the bars' edge
    | o  o  o  o  o |  |    n_top bars, diameter d_top
    |               |  |
    | o           o |  |    n_side bars at each side,
    |       +       |  h    diameter d_side
    | o           o |  |
    |               |  |
    | O  O  O  O  O |  |    n_bottom bars,
    '---------------'  --   diameter d_bottom
    |------ b ------|
)"},
    {"rc_t", R"(
    |------------ b ------------|
    .-------------+-------------.  --   --
    | o   o   o   o   o   o   o |  hf    |   n_top, d_top
    '---------.       .---------'  --    |
              |       |                  |
              |       |                  h
              |       |                  |
              | O O O |                  |   n_bottom,
              '-------'                 --   d_bottom
              |- bw --|      cover: to the bars' edge
)"},
    {"rc_circle", R"(
         .---o---.
       .' o     o '.     n bars in a ring, diameter d_bar
      / o         o \
     |               |   cover: from the surface to
     | o     +     o |          the bars' edge
     |               |
      \ o         o /
       '. o     o .'
         '---o---'
     |------ d ------|
)"},
    {"composite", R"(
    |------------ bc -------------|
    .--------------+--------------.  --   n_top, d_top
    |  o   o   o   o   o   o   o  |  hc   cover: to the
    |  o   o   o   o   o   o   o  |  |           bars' edge
    '--------.-----------.--------'  --   n_bottom, d_bottom
             '----. .----'  tf   |
                  | |            |   b: upper flange
                  | | tw         h   r: fillets of a
                  | |            |      rolled girder
            .-----' '-----. tf2  |
            '-------------'     --
            |---- b2 -----|
)"},
};

}  // namespace

const char* sketch_of(const std::string& name) {
    for (const Sketch& sketch : SKETCHES)
        if (name == sketch.name) return sketch.lines + 1;  // behind the line of the literal's beginning
    return nullptr;
}

}  // namespace velquor
