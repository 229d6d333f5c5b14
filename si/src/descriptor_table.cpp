// The known descriptors: tag, name, layout. ISO/IEC 13818-1, table 2-45; ISO/IEC 13818-6; EN 300 468, table 12 and
// clause 6.4; TS 102 809, clause 5.3; TS 102 006, clause 9; EN 301 192, clause 8; TS 102 323, clause 5. A rare
// descriptor has only its name, and shows its bytes.
#include "descriptor_table.h"

#include <algorithm>
#include <iterator>

namespace si {

namespace {

constexpr std::uint32_t kEacem = 0x00000028;
constexpr std::uint32_t kNordig = 0x00000029;
constexpr std::uint32_t kBritishTerrestrial = 0x0000233A;

constexpr const char* kBytes = "bytes:rest";
constexpr const char* kTeletextPages =
    "page{ISO_639_language_code:lang teletext_type:5 teletext_magazine_number:3 teletext_page_number:8}";
constexpr const char* kVisibleServices = "service{service_id:16 visible_service_flag:1 -:5 logical_channel_number:10}";

// Of UNT and INT alike.
constexpr const char* kTargetSmartcard = "super_CA_system_id:32 private_data_byte:rest";
constexpr const char* kTargetMac = "MAC_addr_mask:bytes6 MAC_addr:bytes6*";
constexpr const char* kTargetSerialNumber = "serial_data:rest";
constexpr const char* kTargetIp = "IPv4_addr_mask:ipv4 IPv4_addr:ipv4*";
constexpr const char* kTargetIpv6 = "IPv6_addr_mask:bytes16 IPv6_addr:bytes16*";

constexpr KnownDescriptor kKnown[] = {
    // ISO/IEC 13818-1 and 13818-6
    {Scope::general, 0x02, "video_stream",
     "multiple_frame_rate_flag:1 frame_rate_code:4 MPEG_1_only_flag:1 constrained_parameter_flag:1 "
     "still_picture_flag:1 ?MPEG_1_only_flag=0(profile_and_level_indication:8 chroma_format:2 "
     "frame_rate_extension_flag:1 -:5)"},
    {Scope::general, 0x03, "audio_stream", "free_format_flag:1 ID:1 layer:2 variable_rate_audio_indicator:1 -:3"},
    {Scope::general, 0x04, "hierarchy",
     "no_view_scalability_flag:1 no_temporal_scalability_flag:1 no_spatial_scalability_flag:1 "
     "no_quality_scalability_flag:1 hierarchy_type:4 -:2 hierarchy_layer_index:6 tref_present_flag:1 -:1 "
     "hierarchy_embedded_layer_index:6 -:2 hierarchy_channel:6"},
    {Scope::general, 0x05, "registration", "format_identifier:32 additional_identification_info:rest"},
    {Scope::general, 0x06, "data_stream_alignment", "alignment_type:8"},
    {Scope::general, 0x07, "target_background_grid", "horizontal_size:14 vertical_size:14 aspect_ratio_information:4"},
    {Scope::general, 0x08, "video_window", "horizontal_offset:14 vertical_offset:14 window_priority:4"},
    {Scope::general, 0x09, "CA", "CA_system_id:16 -:3 CA_PID:13 private_data_byte:rest"},
    {Scope::general, 0x0A, "ISO_639_language", "language{ISO_639_language_code:lang audio_type:8}"},
    {Scope::general, 0x0B, "system_clock",
     "external_clock_reference_indicator:1 -:1 clock_accuracy_integer:6 clock_accuracy_exponent:3 -:5"},
    {Scope::general, 0x0C, "multiplex_buffer_utilization",
     "bound_valid_flag:1 LTW_offset_lower_bound:15 -:1 LTW_offset_upper_bound:15"},
    {Scope::general, 0x0D, "copyright", "copyright_identifier:32 additional_copyright_info:rest"},
    {Scope::general, 0x0E, "maximum_bitrate", "-:2 maximum_bitrate:22"},
    {Scope::general, 0x0F, "private_data_indicator", "private_data_indicator:32"},
    {Scope::general, 0x10, "smoothing_buffer", "-:2 sb_leak_rate:22 -:2 sb_size:22"},
    {Scope::general, 0x11, "STD", "-:7 leak_valid_flag:1"},
    {Scope::general, 0x12, "IBP", "closed_gop_flag:1 identical_gop_flag:1 max_gop_length:14"},
    {Scope::general, 0x13, "carousel_identifier",
     "carousel_id:32 ?(FormatId:8) ?FormatId=1(ModuleVersion:8 ModuleId:16 BlockSize:16 ModuleSize:32 "
     "CompressionMethod:8 OriginalSize:32 TimeOut:8 ObjectKey:bytes) private_data_byte:rest"},
    {Scope::general, 0x14, "association_tag",
     "association_tag:16 use:16 ?use=0(-:8 transaction_id:32 timeout:32) ?use!0(selector:bytes) "
     "private_data_byte:rest"},
    {Scope::general, 0x15, "deferred_association_tags",
     "association_tags_loop_length:8(association_tag:16*) transport_stream_id:16 program_number:16 "
     "?(original_network_id:16) private_data_byte:rest"},
    {Scope::general, 0x17, "NPT_reference",
     "postDiscontinuityIndicator:1 contentId:7 -:7 STC_Reference:33 -:31 NPT_Reference:33 scaleNumerator:16 "
     "scaleDenominator:16"},
    {Scope::general, 0x18, "NPT_endpoint", "-:15 startNPT:33 -:31 stopNPT:33"},
    {Scope::general, 0x19, "stream_mode", "streamMode:8 -:8"},
    {Scope::general, 0x1A, "stream_event", "eventId:16 -:31 eventNPT:33 privateData:rest"},
    {Scope::general, 0x1B, "MPEG-4_video", "profile_and_level:8"},
    {Scope::general, 0x1C, "MPEG-4_audio", "profile_and_level:8"},
    {Scope::general, 0x1D, "IOD", "Scope_of_IOD_label:8 IOD_label:8 InitialObjectDescriptor:rest"},
    {Scope::general, 0x1E, "SL", "ES_ID:16"},
    {Scope::general, 0x1F, "FMC", "stream{ES_ID:16 FlexMuxChannel:8}"},
    {Scope::general, 0x20, "external_ES_ID", "External_ES_ID:16"},
    {Scope::general, 0x21, "MuxCode", kBytes},
    {Scope::general, 0x22, "FmxBufferSize", kBytes},
    {Scope::general, 0x23, "multiplexBuffer", "MB_buffer_size:24 TB_leak_rate:24"},
    {Scope::general, 0x24, "content_labelling", kBytes},
    {Scope::general, 0x25, "metadata_pointer", kBytes},
    {Scope::general, 0x26, "metadata", kBytes},
    {Scope::general, 0x27, "metadata_STD",
     "-:2 metadata_input_leak_rate:22 -:2 metadata_buffer_size:22 -:2 metadata_output_leak_rate:22"},
    {Scope::general, 0x28, "AVC_video",
     "profile_idc:8 constraint_set0_flag:1 constraint_set1_flag:1 constraint_set2_flag:1 constraint_set3_flag:1 "
     "constraint_set4_flag:1 constraint_set5_flag:1 AVC_compatible_flags:2 level_idc:8 AVC_still_present:1 "
     "AVC_24_hour_picture_flag:1 Frame_Packing_SEI_not_present_flag:1 -:5"},
    {Scope::general, 0x29, "IPMP", kBytes},
    {Scope::general, 0x2A, "AVC_timing_and_HRD",
     "hrd_management_valid_flag:1 -:6 .picture_and_timing_info_present:1 "
     "?picture_and_timing_info_present(90kHz_flag:1 -:7 ?90kHz_flag=0(N:32 K:32) num_units_in_tick:32) "
     "fixed_frame_rate_flag:1 temporal_poc_flag:1 picture_to_display_conversion_flag:1 -:5"},
    {Scope::general, 0x2B, "MPEG-2_AAC_audio",
     "MPEG-2_AAC_profile:8 MPEG-2_AAC_channel_configuration:8 MPEG-2_AAC_additional_information:8"},
    {Scope::general, 0x2C, "FlexMuxTiming", "FCR_ES_ID:16 FCRResolution:32 FCRLength:8 FmxRateLength:8"},
    {Scope::general, 0x38, "HEVC_video",
     "profile_space:2 tier_flag:1 profile_idc:5 profile_compatibility_indication:bytes4 progressive_source_flag:1 "
     "interlaced_source_flag:1 non_packed_constraint_flag:1 frame_only_constraint_flag:1 -:44 level_idc:8 "
     "temporal_layer_subset_flag:1 HEVC_still_present_flag:1 HEVC_24hr_picture_present_flag:1 "
     "sub_pic_hrd_params_not_present_flag:1 -:2 HDR_WCG_idc:2 "
     "?temporal_layer_subset_flag(temporal_id_min:3 -:5 temporal_id_max:3 -:5)"},

    // EN 300 468
    {Scope::general, 0x40, "network_name", "network_name:restText"},
    {Scope::general, 0x41, "service_list", "service{service_id:16 service_type:8}"},
    {Scope::general, 0x42, "stuffing", "stuffing_byte:rest"},
    {Scope::general, 0x43, "satellite_delivery_system",
     "frequency:bcd8x10000 orbital_position:degrees west_east_flag:1 polarization:2 roll_off:rollOff "
     "modulation_system:1 modulation_type:2 symbol_rate:bcd7x100 FEC_inner:4"},
    {Scope::general, 0x44, "cable_delivery_system",
     "frequency:bcd8x100 -:12 FEC_outer:4 modulation:8 symbol_rate:bcd7x100 FEC_inner:4"},
    {Scope::general, 0x45, "VBI_data",
     "data_service{data_service_id:8 data_service_descriptor_length:8(data_service_bytes:rest)}"},
    {Scope::general, 0x46, "VBI_teletext", kTeletextPages},
    {Scope::general, 0x47, "bouquet_name", "bouquet_name:restText"},
    {Scope::general, 0x48, "service", "service_type:8 service_provider_name:text service_name:text"},
    {Scope::general, 0x49, "country_availability", "country_availability_flag:1 -:7 country_code:lang*"},
    {Scope::general, 0x4A, "linkage",
     "transport_stream_id:16 original_network_id:16 service_id:16 linkage_type:8 "
     "?linkage_type=0x08(hand-over_type:4 -:3 origin_type:1 ?hand-over_type=1(network_id:16) "
     "?hand-over_type=2(network_id:16) ?hand-over_type=3(network_id:16) ?origin_type=0(initial_service_id:16)) "
     "?linkage_type=0x09(OUI_data_length:8(+{OUI:24 selector:bytes})) "
     "?linkage_type=0x0A(table_type:8) "
     "?linkage_type=0x0B(platform_id_data_length:8(platform{platform_id:24 "
     "platform_name_loop_length:8(+{ISO_639_language_code:lang platform_name:text})})) "
     "?linkage_type=0x0D(target_event_id:16 target_listed:1 event_simulcast:1 -:6) "
     "?linkage_type=0x0E(loop_length:8(event{target_event_id:16 target_listed:1 event_simulcast:1 link_type:2 "
     "target_id_type:2 .original_network_id_flag:1 .service_id_flag:1 ?target_id_type=3(user_defined_id:16) "
     "?target_id_type!3(?target_id_type=1(target_transport_stream_id:16) "
     "?original_network_id_flag(target_original_network_id:16) ?service_id_flag(target_service_id:16))})) "
     "private_data_byte:rest"},
    {Scope::general, 0x4B, "NVOD_reference", "reference{transport_stream_id:16 original_network_id:16 service_id:16}"},
    {Scope::general, 0x4C, "time_shifted_service", "reference_service_id:16"},
    {Scope::general, 0x4D, "short_event", "ISO_639_language_code:lang event_name:text text:text"},
    {Scope::general, 0x4E, "extended_event",
     "descriptor_number:4 last_descriptor_number:4 ISO_639_language_code:lang "
     "length_of_items:8(item{item_description:text item:text}) text:text"},
    {Scope::general, 0x4F, "time_shifted_event", "reference_service_id:16 reference_event_id:16"},
    {Scope::general, 0x50, "component",
     "stream_content_ext:4 stream_content:4 component_type:8 component_tag:8 ISO_639_language_code:lang text:restText"},
    {Scope::general, 0x51, "mosaic",
     "mosaic_entry_point:1 number_of_horizontal_elementary_cells:3 -:1 number_of_vertical_elementary_cells:3 "
     "logical_cell{logical_cell_id:6 -:7 logical_cell_presentation_info:3 "
     "elementary_cell_field_length:8(+{-:2 elementary_cell_id:6}) cell_linkage_info:8 "
     "?cell_linkage_info=1(bouquet_id:16) "
     "?cell_linkage_info=2(original_network_id:16 transport_stream_id:16 service_id:16) "
     "?cell_linkage_info=3(original_network_id:16 transport_stream_id:16 service_id:16) "
     "?cell_linkage_info=4(original_network_id:16 transport_stream_id:16 service_id:16 event_id:16)}"},
    {Scope::general, 0x52, "stream_identifier", "component_tag:8"},
    {Scope::general, 0x53, "CA_identifier", "CA_system_id:16*"},
    {Scope::general, 0x54, "content", "content{content_nibble_level_1:4 content_nibble_level_2:4 user_byte:8}"},
    {Scope::general, 0x55, "parental_rating", "rating{country_code:lang rating:8}"},
    {Scope::general, 0x56, "teletext", kTeletextPages},
    {Scope::general, 0x57, "telephone",
     "-:2 foreign_availability:1 connection_type:5 -:1 .country_prefix_length:2 .international_area_code_length:3 "
     ".operator_code_length:2 -:1 .national_area_code_length:3 .core_number_length:4 "
     "country_prefix:chars@country_prefix_length international_area_code:chars@international_area_code_length "
     "operator_code:chars@operator_code_length national_area_code:chars@national_area_code_length "
     "core_number:chars@core_number_length"},
    {Scope::general, 0x58, "local_time_offset",
     "offset{country_code:lang country_region_id:6 -:1 local_time_offset_polarity:1 local_time_offset:hhmm "
     "time_of_change:utc next_time_offset:hhmm}"},
    {Scope::general, 0x59, "subtitling",
     "page{ISO_639_language_code:lang subtitling_type:8 composition_page_id:16 ancillary_page_id:16}"},
    {Scope::general, 0x5A, "terrestrial_delivery_system",
     "centre_frequency:32x10 bandwidth:3 priority:1 Time_Slicing_indicator:1 MPE-FEC_indicator:1 -:2 "
     "constellation:2 hierarchy_information:3 code_rate-HP_stream:3 code_rate-LP_stream:3 guard_interval:2 "
     "transmission_mode:2 other_frequency_flag:1 -:32"},
    {Scope::general, 0x5B, "multilingual_network_name", "network{ISO_639_language_code:lang network_name:text}"},
    {Scope::general, 0x5C, "multilingual_bouquet_name", "bouquet{ISO_639_language_code:lang bouquet_name:text}"},
    {Scope::general, 0x5D, "multilingual_service_name",
     "service{ISO_639_language_code:lang service_provider_name:text service_name:text}"},
    {Scope::general, 0x5E, "multilingual_component",
     "component_tag:8 component{ISO_639_language_code:lang text_description:text}"},
    {Scope::general, 0x5F, "private_data_specifier", "private_data_specifier:32"},
    {Scope::general, 0x60, "service_move", "new_original_network_id:16 new_transport_stream_id:16 new_service_id:16"},
    {Scope::general, 0x61, "short_smoothing_buffer", "sb_size:2 sb_leak_rate:6 DVB_reserved:rest"},
    {Scope::general, 0x62, "frequency_list",
     "-:6 coding_type:2 ?coding_type=1(centre_frequency:bcd8x10000*) ?coding_type=2(centre_frequency:bcd8x100*) "
     "?coding_type=3(centre_frequency:32x10*) ?coding_type=0(bytes:rest)"},
    {Scope::general, 0x63, "partial_transport_stream",
     "-:2 peak_rate:22 -:2 minimum_overall_smoothing_rate:22 -:2 maximum_overall_smoothing_buffer:14"},
    {Scope::general, 0x64, "data_broadcast",
     "data_broadcast_id:16 component_tag:8 selector:bytes ISO_639_language_code:lang text:text"},
    {Scope::general, 0x65, "scrambling", "scrambling_mode:8"},
    {Scope::general, 0x66, "data_broadcast_id",
     "data_broadcast_id:16 "
     "?data_broadcast_id=0x000A(OUI_data_length:8(update{OUI:24 -:4 update_type:4 -:2 update_versioning_flag:1 "
     "update_version:5 selector:bytes})) "
     "?data_broadcast_id=0x000B(platform_id_data_length:8(platform{platform_id:24 action_type:8 -:2 "
     "INT_versioning_flag:1 INT_version:5})) id_selector_byte:rest"},
    {Scope::general, 0x67, "transport_stream", kBytes},
    {Scope::general, 0x68, "DSNG", "DSNG_text:restString"},
    {Scope::general, 0x69, "PDC", "-:4 programme_identification_label:20"},
    {Scope::general, 0x6A, "AC-3",
     ".component_type_flag:1 .bsid_flag:1 .mainid_flag:1 .asvc_flag:1 -:4 ?component_type_flag(component_type:8) "
     "?bsid_flag(bsid:8) ?mainid_flag(mainid:8) ?asvc_flag(asvc:8) additional_info_byte:rest"},
    {Scope::general, 0x6B, "ancillary_data", "ancillary_data_identifier:8"},
    {Scope::general, 0x6C, "cell_list",
     "cell{cell_id:16 cell_latitude:16 cell_longitude:16 cell_extent_of_latitude:12 cell_extent_of_longitude:12 "
     "subcell_info_loop_length:8(+{cell_id_extension:8 subcell_latitude:16 subcell_longitude:16 "
     "subcell_extent_of_latitude:12 subcell_extent_of_longitude:12})}"},
    {Scope::general, 0x6D, "cell_frequency_link",
     "cell{cell_id:16 frequency:32x10 subcell_info_loop_length:8(+{cell_id_extension:8 transposer_frequency:32x10})}"},
    {Scope::general, 0x6E, "announcement_support",
     "announcement_support_indicator:16 announcement{announcement_type:4 -:1 reference_type:3 "
     "?reference_type=1(original_network_id:16 transport_stream_id:16 service_id:16 component_tag:8) "
     "?reference_type=2(original_network_id:16 transport_stream_id:16 service_id:16 component_tag:8) "
     "?reference_type=3(original_network_id:16 transport_stream_id:16 service_id:16 component_tag:8)}"},
    {Scope::general, 0x6F, "application_signalling", "application{-:1 application_type:15 -:3 AIT_version_number:5}"},
    {Scope::general, 0x70, "adaptation_field_data", "adaptation_field_data_identifier:8"},
    {Scope::general, 0x71, "service_identifier", "textual_service_identifier:restString"},
    {Scope::general, 0x72, "service_availability", "availability_flag:1 -:7 cell_id:16*"},
    {Scope::general, 0x73, "default_authority", "default_authority:restString"},
    {Scope::general, 0x74, "related_content", ""},
    {Scope::general, 0x75, "TVA_id", "TVA{TVA_id:16 -:5 running_status:3}"},
    {Scope::general, 0x76, "content_identifier",
     "content{crid_type:6 .crid_location:2 ?crid_location=0(crid:string) ?crid_location=1(crid_ref:16)}"},
    {Scope::general, 0x77, "time_slice_fec_identifier",
     "time_slicing:1 mpe_fec:2 -:2 frame_size:3 max_burst_duration:8 max_average_rate:4 time_slice_fec_id:4 "
     "id_selector_byte:rest"},
    {Scope::general, 0x78, "ECM_repetition_rate", "CA_system_id:16 ECM_repetition_rate:16 private_data_byte:rest"},
    {Scope::general, 0x79, "S2_satellite_delivery_system",
     "scrambling_sequence_selector:1 multiple_input_stream_flag:1 -:1 not_timeslice_flag:1 -:2 TS_GS_mode:2 "
     "?scrambling_sequence_selector(-:6 scrambling_sequence_index:18) "
     "?multiple_input_stream_flag(input_stream_identifier:8) ?not_timeslice_flag=0(?(timeslice_number:8))"},
    {Scope::general, 0x7A, "enhanced_AC-3",
     ".component_type_flag:1 .bsid_flag:1 .mainid_flag:1 .asvc_flag:1 mixinfoexists:1 .substream1_flag:1 "
     ".substream2_flag:1 .substream3_flag:1 ?component_type_flag(component_type:8) ?bsid_flag(bsid:8) "
     "?mainid_flag(mainid:8) ?asvc_flag(asvc:8) ?substream1_flag(substream1:8) ?substream2_flag(substream2:8) "
     "?substream3_flag(substream3:8) additional_info_byte:rest"},
    {Scope::general, 0x7B, "DTS",
     "sample_rate_code:4 bit_rate_code:6 nblks:7 fsize:14 surround_mode:6 lfe_flag:1 extended_surround_flag:2 "
     "additional_info_byte:rest"},
    {Scope::general, 0x7C, "AAC",
     "profile_and_level:8 ?(.AAC_type_flag:1 SAOC_DE_flag:1 -:6 ?AAC_type_flag(AAC_type:8)) "
     "additional_info_byte:rest"},
    {Scope::general, 0x7D, "XAIT_location",
     "xait_original_network_id:16 xait_service_id:16 xait_version_number:5 xait_update_policy:3"},
    {Scope::general, 0x7E, "FTA_content_management",
     "user_defined:1 -:3 do_not_scramble:1 control_remote_access_over_internet:2 do_not_apply_revocation:1"},
    {Scope::general, 0x7F, "extension", "descriptor_tag_extension:8 bytes:rest"},
    {Scope::general, 0x83, "logical_channel", kVisibleServices, kEacem},
    {Scope::general, 0x88, "HD_simulcast_logical_channel", kVisibleServices, kEacem},
    {Scope::general, 0x83, "logical_channel",
     "service{service_id:16 visible_service_flag:1 -:1 logical_channel_number:14}", kNordig},
    {Scope::general, 0x83, "logical_channel", "service{service_id:16 -:6 logical_channel_number:10}",
     kBritishTerrestrial},

    // EN 300 468, the tags within an extension_descriptor
    {Scope::extension, 0x00, "image_icon", kBytes},
    {Scope::extension, 0x01, "cpcm_delivery_signalling", kBytes},
    {Scope::extension, 0x02, "CP", kBytes},
    {Scope::extension, 0x03, "CP_identifier", kBytes},
    {Scope::extension, 0x04, "T2_delivery_system",
     "plp_id:8 T2_system_id:16 ?(SISO_MISO:2 bandwidth:4 -:2 guard_interval:3 transmission_mode:3 "
     "other_frequency_flag:1 tfs_flag:1 cell{cell_id:16 ?tfs_flag(frequency_loop_length:8(centre_frequency:32x10*)) "
     "?tfs_flag=0(centre_frequency:32x10) "
     "subcell_info_loop_length:8(+{cell_id_extension:8 transposer_frequency:32x10})})"},
    {Scope::extension, 0x05, "SH_delivery_system", kBytes},
    {Scope::extension, 0x06, "supplementary_audio",
     "mix_type:1 editorial_classification:5 -:1 .language_code_present:1 "
     "?language_code_present(ISO_639_language_code:lang) private_data_byte:rest"},
    {Scope::extension, 0x07, "network_change_notify", kBytes},
    {Scope::extension, 0x08, "message", "message_id:8 ISO_639_language_code:lang text:restText"},
    {Scope::extension, 0x09, "target_region", kBytes},
    {Scope::extension, 0x0A, "target_region_name", kBytes},
    {Scope::extension, 0x0B, "service_relocated",
     "old_original_network_id:16 old_transport_stream_id:16 old_service_id:16"},
    {Scope::extension, 0x0C, "XAIT_PID", kBytes},
    {Scope::extension, 0x0D, "C2_delivery_system",
     "plp_id:8 data_slice_id:8 C2_System_tuning_frequency:32 C2_System_tuning_frequency_type:2 "
     "active_OFDM_symbol_duration:3 C2_guard_interval:3"},
    {Scope::extension, 0x0E, "DTS-HD", kBytes},
    {Scope::extension, 0x0F, "DTS_Neural", kBytes},
    {Scope::extension, 0x10, "video_depth_range", kBytes},
    {Scope::extension, 0x11, "T2MI", kBytes},
    {Scope::extension, 0x13, "URI_linkage",
     "uri_linkage_type:8 uri:string ?uri_linkage_type=0(min_polling_interval:16) "
     "?uri_linkage_type=1(min_polling_interval:16) private_data_byte:rest"},
    {Scope::extension, 0x14, "CI_ancillary_data", kBytes},
    {Scope::extension, 0x15, "AC-4",
     ".ac4_config_flag:1 .ac4_toc_flag:1 -:6 ?ac4_config_flag(ac4_dialog_enhancement_enabled:1 ac4_channel_mode:2 -:5) "
     "?ac4_toc_flag(ac4_toc:bytes) additional_info_byte:rest"},
    {Scope::extension, 0x16, "C2_bundle_delivery_system", kBytes},
    {Scope::extension, 0x17, "S2X_satellite_delivery_system", kBytes},
    {Scope::extension, 0x18, "protection_message", kBytes},
    {Scope::extension, 0x19, "audio_preselection", kBytes},
    {Scope::extension, 0x20, "TTML_subtitling", kBytes},
    {Scope::extension, 0x21, "DTS-UHD", kBytes},

    // TS 102 809, AIT
    {Scope::application, 0x00, "application",
     "application_profiles_length:8(profile{application_profile:16 version.major:8 version.minor:8 version.micro:8}) "
     "service_bound_flag:1 visibility:2 -:5 application_priority:8 transport_protocol_label:8*"},
    {Scope::application, 0x01, "application_name", "name{ISO_639_language_code:lang application_name:text}"},
    {Scope::application, 0x02, "transport_protocol",
     "protocol_id:16 transport_protocol_label:8 "
     "?protocol_id=1(remote_connection:1 -:7 "
     "?remote_connection(original_network_id:16 transport_stream_id:16 service_id:16) component_tag:8) "
     "?protocol_id=3(URL{URL_base:string URL_extension_count:8#(URL_extension:string)}) selector_byte:rest"},
    {Scope::application, 0x03, "dvb_j_application", "parameter:string*"},
    {Scope::application, 0x04, "dvb_j_application_location",
     "base_directory:string classpath_extension:string initial_class:restString"},
    {Scope::application, 0x05, "external_application_authorisation",
     "external_application{organisation_id:32 application_id:16 application_priority:8}"},
    {Scope::application, 0x06, "routing_descriptor_ipv4", kBytes},
    {Scope::application, 0x07, "routing_descriptor_ipv6", kBytes},
    {Scope::application, 0x0B, "application_icons", "icon_locator:string icon_flags:16 reserved_bytes:rest"},
    {Scope::application, 0x0C, "pre-fetch", "transport_protocol_label:8 module{label:string prefetch_priority:8}"},
    {Scope::application, 0x0D, "DII_location",
     "transport_protocol_label:8 DII{-:1 DII_identification:15 association_tag:16}"},
    {Scope::application, 0x10, "application_storage",
     "storage_property:8 not_launchable_from_broadcast:1 launchable_completely_from_cache:1 "
     "is_launchable_with_older_version:1 -:6 version:31 priority:8"},
    {Scope::application, 0x11, "ip_signalling", "platform_id:24"},
    {Scope::application, 0x14, "graphics_constraints",
     "-:5 can_run_without_visible_ui:1 handles_configuration_changed:1 handles_externally_controlled_video:1 "
     "graphics_configuration:8*"},
    {Scope::application, 0x15, "simple_application_location", "initial_path:restString"},
    {Scope::application, 0x16, "application_usage", "usage_type:8"},
    {Scope::application, 0x17, "simple_application_boundary", "boundary_extension_count:8#(boundary_extension:string)"},

    // TS 102 006, UNT
    {Scope::update, 0x01, "scheduling",
     "start_date_time:utc end_date_time:utc final_availability:1 periodicity_flag:1 period_unit:2 duration_unit:2 "
     "estimated_cycle_time_unit:2 period:8 availability_duration:8 estimated_cycle_time:8 private_data_byte:rest"},
    {Scope::update, 0x02, "update", "update_flag:2 update_method:4 update_priority:2 private_data_byte:rest"},
    {Scope::update, 0x03, "ssu_location",
     "data_broadcast_id:16 ?data_broadcast_id=0x000A(association_tag:16) private_data_byte:rest"},
    {Scope::update, 0x04, "message",
     "descriptor_number:4 last_descriptor_number:4 ISO_639_language_code:lang text:restText"},
    {Scope::update, 0x05, "ssu_event_name", "ISO_639_language_code:lang event_name:text text:text"},
    {Scope::update, 0x06, "target_smartcard", kTargetSmartcard},
    {Scope::update, 0x07, "target_MAC_address", kTargetMac},
    {Scope::update, 0x08, "target_serial_number", kTargetSerialNumber},
    {Scope::update, 0x09, "target_IP_address", kTargetIp},
    {Scope::update, 0x0A, "target_IPv6_address", kTargetIpv6},
    {Scope::update, 0x0B, "ssu_subgroup_association", "subgroup_tag:40"},
    {Scope::update, 0x0C, "enhanced_message", kBytes},
    {Scope::update, 0x0D, "ssu_uri", "max_holdoff_time:8 min_polling_interval:8 uri:restString"},

    // EN 301 192, INT
    {Scope::ipMac, 0x01, "target_smartcard", kTargetSmartcard},
    {Scope::ipMac, 0x02, "target_MAC_address", kTargetMac},
    {Scope::ipMac, 0x03, "target_serial_number", kTargetSerialNumber},
    {Scope::ipMac, 0x04, "target_IP_address", kTargetIp},
    {Scope::ipMac, 0x05, "target_IPv6_address", kTargetIpv6},
    {Scope::ipMac, 0x06, "IP/MAC_platform_name", "ISO_639_language_code:lang platform_name:restText"},
    {Scope::ipMac, 0x07, "IP/MAC_platform_provider_name", "ISO_639_language_code:lang platform_provider_name:restText"},
    {Scope::ipMac, 0x08, "target_MAC_address_range", "range{MAC_addr_low:bytes6 MAC_addr_high:bytes6}"},
    {Scope::ipMac, 0x09, "target_IP_slash", "subnet{IPv4_addr:ipv4 IPv4_slash_mask:8}"},
    {Scope::ipMac, 0x0A, "target_IP_source_slash",
     "subnet{IPv4_source_addr:ipv4 IPv4_source_slash_mask:8 IPv4_dest_addr:ipv4 IPv4_dest_slash_mask:8}"},
    {Scope::ipMac, 0x0B, "target_IPv6_slash", "subnet{IPv6_addr:bytes16 IPv6_slash_mask:8}"},
    {Scope::ipMac, 0x0C, "target_IPv6_source_slash",
     "subnet{IPv6_source_addr:bytes16 IPv6_source_slash_mask:8 IPv6_dest_addr:bytes16 IPv6_dest_slash_mask:8}"},
    {Scope::ipMac, 0x0D, "IP/MAC_stream_location",
     "network_id:16 original_network_id:16 transport_stream_id:16 service_id:16 component_tag:8"},
    {Scope::ipMac, 0x0E, "ISP_access_mode", "access_mode:8"},
    {Scope::ipMac, 0x0F, "IP/MAC_generic_stream_location", kBytes},

    // TS 102 323, RNT
    {Scope::resolution, 0x40, "RAR_over_DVB_stream",
     "first_valid_date:utc last_valid_date:utc weighting:6 complete_flag:1 scheduled_flag:1 transport_stream_id:16 "
     "original_network_id:16 service_id:16 component_tag:8 "
     "?scheduled_flag(download_start_time:utc download_period_duration:8 download_cycle_time:8)"},
    {Scope::resolution, 0x41, "RAR_over_IP",
     "first_valid_date:utc last_valid_date:utc weighting:6 complete_flag:1 -:1 url:string"},
    {Scope::resolution, 0x42, "RNT_scan", "stream{transport_stream_id:16 original_network_id:16 scan_weighting:8}"},
};

const KnownDescriptor* find(Scope scope, std::uint8_t tag, std::uint32_t specifier) {
    constexpr std::uint8_t kFirstPrivate = 0x80;
    const std::uint32_t wanted = tag >= kFirstPrivate ? specifier : 0;
    const auto* const found = std::find_if(std::begin(kKnown), std::end(kKnown), [&](const KnownDescriptor& known) {
        return known.scope == scope && known.tag == tag && known.specifier == wanted;
    });
    return found == std::end(kKnown) ? nullptr : found;
}

/// Whether a tag that the scope does not define has its general meaning.
bool isShared(Scope scope, std::uint8_t tag) {
    constexpr std::uint8_t kFirstDvb = 0x40;
    constexpr std::uint8_t kPrivateDataSpecifier = 0x5F;
    return scope == Scope::application ? tag == kPrivateDataSpecifier : scope != Scope::extension && tag >= kFirstDvb;
}

}  // namespace

const KnownDescriptor* knownDescriptor(Scope scope, std::uint8_t tag, std::uint32_t specifier) {
    const KnownDescriptor* const own = find(scope, tag, specifier);
    return own == nullptr && isShared(scope, tag) ? find(Scope::general, tag, specifier) : own;
}

}  // namespace si
