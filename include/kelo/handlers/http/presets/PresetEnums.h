#pragma once

#include "kelo/handlers/http/presets/NamedEnum.h"

namespace halvor::kelo {

// The vocabulary of a broadcast preset's sections. The plug-in passes preset content through and
// no handler branches on these; they are here so that code reading a preset knows the numbers
// and names the host uses. Each has its name table: namesOf(PresetMode{}).
KELO_NAMED_ENUM(PresetMode, FM = 0, HD = 1, FM_PLUS_HD = 2, DRM_PLUS = 3)
KELO_NAMED_ENUM(AudioInputSelect, ANALOG = 0, MPX = 1, DIGITAL_PRIMARY = 2, DIGITAL_SECONDARY = 3,
                AUDIO_PLAYER_TO_AES1 = 4, AUDIO_PLAYER_TO_AES2 = 5, MPX_OVER_AES = 6)
KELO_NAMED_ENUM(AudioSourceMode, AUDIO_SOURCE_UNUSED = 0, AUDIO_SOURCE_ANALOG_AES = 1,
                AUDIO_SOURCE_BALANCED_ANALOG = 2, AUDIO_SOURCE_DIGITAL_AES = 3,
                AUDIO_SOURCE_SERIAL_I_Q = 4, AUDIO_SOURCE_AUDIO_PLAYER_TO_ANALOG_AES = 5,
                AUDIO_SOURCE_AUDIO_PLAYER_TO_DIGITAL_AES = 6, AUDIO_SOURCE_AUDIO_PLAYER_TO_I2S = 7)
KELO_NAMED_ENUM(DeadAirReaction, NONE = 0, INHIBIT = 1, CHANGE_PRESET = 2)
KELO_NAMED_ENUM(MainAudioPreEmphasis, ZERO_US = 0, TWENTY_FIVE_US = 1, FIFTY_US = 2,
                SEVENTY_FIVE_US = 3)
KELO_NAMED_ENUM(MonoStereo, MONO = 0, STEREO = 1)
KELO_NAMED_ENUM(ScaMode, FM = 0, DSB_SC = 1)
KELO_NAMED_ENUM(ScaPreEmphasis, SCA_PREEMPHASIS_0US = 0, SCA_PREEMPHASIS_50US = 1,
                SCA_PREEMPHASIS_75US = 2, SCA_PREEMPHASIS_150US = 3)
KELO_NAMED_ENUM(AudioInputType, AUDIO_INPUT_TYPE_ANALOG = 0, AUDIO_INPUT_TYPE_DIGITAL = 1)
KELO_NAMED_ENUM(AudioProcessor, NONE = 0, ORBAN_INSIDE = 1)
KELO_NAMED_ENUM(AudioStereoMono, MONO_LR = 0, MONO_LEFT = 1, MONO_RIGHT = 2, STEREO = 3)
KELO_NAMED_ENUM(DisableEnable, ENABLED = 1, DISABLED = 0)
KELO_NAMED_ENUM(ExciterOptions, A = 0, B = 1)
KELO_NAMED_ENUM(ExgineProtocol, UDP = 0, TCP = 1)
KELO_NAMED_ENUM(HdBoostEnable, HD_BOOST_MER = 0, HD_BOOST_EFFICIENCY = 1)
KELO_NAMED_ENUM(LVPSConfiguration, SINGLE_LVPS_1A = 0, SINGLE_LVPS_1B = 1, DUAL_LVPS_1A_1B = 2,
                THREE_LVPS_1AB_2A = 3, FOUR_LVPS_1AB_2AB = 4)
KELO_NAMED_ENUM(OtherSampleOutput, SAMPLE_OUTPUT_PILOT = 0, SAMPLE_OUTPUT_MPX = 1)
KELO_NAMED_ENUM(RdsBaudRate, BAUD_150 = 1, BAUD_300 = 2, BAUD_600 = 3, BAUD_1200 = 4, BAUD_2400 = 5,
                BAUD_4800 = 6, BAUD_9600 = 7, BAUD_19200 = 8, BAUD_38400 = 9, BAUD_57600 = 10,
                BAUD_115200 = 11)
KELO_NAMED_ENUM(RdsDataSource, RDS_DATA_SOURCE_UECP = 0, INTERNAL = 1, EXT_ASCII = 3, IP_ASCII = 4,
                IP_UECP = 5)
KELO_NAMED_ENUM(RdsMs, MS_SPEECH = 0, MS_MUSIC = 1)
KELO_NAMED_ENUM(RdsMusicSpeech, MS_SPEECH = 0, MS_MUSIC = 1)
KELO_NAMED_ENUM(RdsScrollSpeed, SCROLLING_OFF = 0, SCROLL_SLOW = 1, SCROLL_FAST = 2)
KELO_NAMED_ENUM(RdsTrafficInfo, NONE = 0, TA = 1, TP = 2, TA_TP = 3)
KELO_NAMED_ENUM(ScaAudioSource, SCA_AUDIO_SOURCE_1 = 0, SCA_AUDIO_SOURCE_2 = 1)
KELO_NAMED_ENUM(StaticDynamic, STATIC = 0, DYNAMIC = 1)
KELO_NAMED_ENUM(RdsNumOfAf, NONE = 0, NUM_1 = 1, NUM_2 = 2, NUM_3 = 3, NUM_4 = 4, NUM_5 = 5,
                NUM_6 = 6, NUM_7 = 7, NUM_8 = 8, NUM_9 = 9, NUM_10 = 10, NUM_11 = 11, NUM_12 = 12,
                NUM_13 = 13, NUM_14 = 14, NUM_15 = 15, NUM_16 = 16, NUM_17 = 17, NUM_18 = 18,
                NUM_19 = 19, NUM_20 = 20, NUM_21 = 21, NUM_22 = 22, NUM_23 = 23, NUM_24 = 24,
                NUM_25 = 25)
KELO_NAMED_ENUM(RdsPty, TYPE_0 = 0, TYPE_1 = 1, TYPE_2 = 2, TYPE_3 = 3, TYPE_4 = 4, TYPE_5 = 5,
                TYPE_6 = 6, TYPE_7 = 7, TYPE_8 = 8, TYPE_9 = 9, TYPE_10 = 10, TYPE_11 = 11,
                TYPE_12 = 12, TYPE_13 = 13, TYPE_14 = 14, TYPE_15 = 15, TYPE_16 = 16, TYPE_17 = 17,
                TYPE_18 = 18, TYPE_19 = 19, TYPE_20 = 20, TYPE_21 = 21, TYPE_22 = 22, TYPE_23 = 23,
                TYPE_24 = 24, TYPE_25 = 25, TYPE_26 = 26, TYPE_27 = 27, TYPE_28 = 28, TYPE_29 = 29,
                TYPE_30 = 30, TYPE_31 = 31)

}  // namespace halvor::kelo
