// SPDX-License-Identifier: MIT
// The compiled resources between two symbols; CMake puts the folder of player.res on the search path.
    .section .rodata
    .balign 4
    .globl player_res_begin
player_res_begin:
    .incbin "player.res"
    .globl player_res_end
player_res_end:
    .byte 0
    .section .note.GNU-stack, "", %progbits
