// SPDX-License-Identifier: MIT
// Numbers of the resources in player.rc, for the resource compiler and for the player's code alike.
#pragma once

// Dialogs
#define IDD_ABOUTBOX 100
#define IDD_PLAYER_DIALOG 102
#define IDD_MESSAGE_PANEL 136
#define IDD_VOLUME 137
#define IDD_SAVING 140

// Menu
#define IDR_MAINMENU 130

// Icons, cursor, bitmap
#define IDI_PLAYER 129
#define IDI_PLAY 131
#define IDI_PAUSE 132
#define IDI_STOP 133
#define IDC_POINTING_HAND 134
#define IDI_VOLUME 135
#define IDB_ABOUT 138

// The application icon as a drawing (raw data), for places that take any size
#define IDR_PLAYER_SVG 139

// Strings
#define IDS_APP_TITLE 1
#define IDS_PLAY 2
#define IDS_PAUSE 3
#define IDS_STOP 4
#define IDS_OPEN_VOLUME 5
#define IDS_CLOSE_VOLUME 6
#define IDS_VOLUME_PROGRAM 7
#define IDS_NO_VOLUME_PROGRAM 8
#define IDS_NO_AUDIO_DEVICE 9
#define IDS_TIME_FORMAT 10
#define IDS_CANNOT_OPEN_FILE 11
#define IDS_REGISTRY_KEY 12
#define IDS_POSITION_OF 13
#define IDS_WAITING_FOR_FILE 20
#define IDS_NO_PICTURES 21
#define IDS_END_UNREADABLE 22
#define IDS_END_DAMAGED 23
#define IDS_TITLE_AT_SPEED 24
#define IDS_SAVING 30
#define IDS_CANNOT_SAVE 31

// Controls of the main window
#define IDC_PLAY_PAUSE 1000
#define IDC_STOP 1001
#define IDC_VOLUME 1002
#define IDC_PANEL_FRAME 1004

// Controls of the message panel
#define IDC_POSITION_BAR 1005
#define IDC_PICTURE_FRAME 1006
#define IDC_TOTAL_CAPTION 1007
#define IDC_TOTAL 1008
#define IDC_CURRENT_CAPTION 1010
#define IDC_CURRENT 1011

// Controls of the volume dialog
#define IDC_SYSTEM_VOLUME 1136
#define IDC_MASTER_VOLUME 1139
#define IDC_MASTER_MUTE 1140
#define IDC_WAVE_VOLUME 1143
#define IDC_WAVE_MUTE 1144
#define IDC_LEVEL_METER 1145
#define IDC_MIXER_NAME 1158

// Controls of the progress dialog
#define IDC_SAVING_STATE 1200

// Controls that are never addressed
#ifndef IDC_STATIC
#define IDC_STATIC (-1)
#endif

// Menu commands
#define ID_FILE_OPEN 57601
#define ID_FILE_CLOSE 57602
#define ID_FILE_SAVE_AS 57604
#define ID_EDIT_COPY 57634
#define ID_FILE_EXIT 32773
#define ID_PLAY_PLAYPAUSE 32774
#define ID_PLAY_STOP 32775
#define ID_HELP_ABOUT 32776
#define ID_PLAY_BACK_5 32777
#define ID_PLAY_ON_5 32778
#define ID_PLAY_BACK_1 32779
#define ID_PLAY_ON_1 32780
#define ID_PLAY_BACK_TENTH 32781
#define ID_PLAY_ON_TENTH 32782
#define ID_PLAY_TO_START 32783
#define ID_PLAY_TO_END 32784
#define ID_PLAY_PREVIOUS_PICTURE 32785
#define ID_PLAY_NEXT_PICTURE 32786
#define ID_PLAY_LOUDER 32787
#define ID_PLAY_QUIETER 32788
#define ID_PLAY_MUTE 32789
#define ID_PLAY_SLOWER 32790
#define ID_PLAY_FASTER 32791
#define ID_PLAY_NORMAL_SPEED 32792
#define ID_VIEW_LARGER 32830
#define ID_VIEW_SMALLER 32831
#define ID_VIEW_ORIGINAL_SIZE 32832
#define ID_VIEW_FULL_SCREEN 32833
#define ID_PLAY_NEXT_MESSAGE 32800
#define ID_PLAY_PREVIOUS_MESSAGE 32801
