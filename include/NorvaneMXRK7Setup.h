/* SPDX-License-Identifier: MIT
 * Copyright (c) 2024-2026 Norvane */
/**
 * @mainpage NorvaneMXRK7Setup: the C interface
 *
 * The settings library of the MXR-K7 USB DJ mixer has a plain C interface, usable from C and C++
 * and through any foreign-function interface. Every function returns a result code and writes its
 * outputs through pointer arguments. Build with `pkg-config --cflags --libs NorvaneMXRK7Setup`, or
 * link the CMake target `NorvaneMXRK7Setup::NorvaneMXRK7Setup` of `find_package(NorvaneMXRK7Setup)`.
 *
 * The functions are grouped by the mixer's settings under Modules; the rules they all follow are
 * below. The example programs under Examples come from the source tree's `examples/` folder, and
 * its `docs/api.md` is a short guide for programmers.
 *
 * @section nvx_product Result codes and the product id
 * Every function returns one of the result codes #NVX_OK, #NVX_WARNING, #NVX_ERROR, or (only
 * NVX_IsUSBConnection()) #NVX_CONNECTED and #NVX_NOT_CONNECTED. Call NVX_GetProductId() once with
 * "MXR-K7" and pass the id it gives, which is always 0, as the first argument of every other call.
 * Any other product id gives #NVX_ERROR (NVX_IsUSBConnection() answers #NVX_NOT_CONNECTED).
 *
 * @section nvx_outputs Outputs and argument tests
 * An output is written only on the paths its function's documentation names; on every other path
 * it keeps the value the caller put there. Several getters answer #NVX_OK without writing their
 * output when nothing is stored: preset the output when you need to tell that case apart. Each
 * function tests its arguments in a fixed order, given in its documentation, and an argument error
 * returns #NVX_ERROR before any mixer or file is touched (the few exceptions are named where they
 * occur). Numbers are `int32_t` for the product id, channels, the routing group, result codes and
 * languages; every other index is a `uint32_t`, so a negative index fails its upper bound.
 * Several bounds admit one value past a table on purpose (a text function that hands out the
 * table's NULL end entry, a re-apply function that accepts one index more than its setter): they
 * are part of the contract and are documented with each function.
 *
 * @section nvx_texts Texts
 * Texts handed out by the library are owned by it: never free or modify them. Table texts (menus,
 * names) live for the life of the process. A text read from a file (the version texts and the
 * routing warning text) stays valid until the same function is called again on the same thread;
 * copy it to keep it longer. Texts are UTF-8.
 *
 * @section nvx_effects What a call does: the mixers, the settings file, announcements
 * - A @b setter tests its arguments, then runs the @b device @b loop with its write request: it
 *   counts the connected mixers once, then for each of them in turn finds it again, opens it, sends
 *   the request and closes it. A mixer that cannot be opened is skipped silently (another program
 *   using this library holds it, or the user lacks permission), and a failed request is ignored.
 *   The setter then @b stores the caller's choice in the settings file (also when no mixer is
 *   connected) and, for the routing and the boost level, @b announces the change to every process
 *   of the user (see @ref nvx_callbacks "Callbacks"). Its result never depends on how many mixers
 *   took the setting or whether the file took it. (The `mxrk7` tool reports both.)
 * - The @b settings @b file is `$XDG_CONFIG_HOME/com.norvane.MXR-K7autosetup.plist` (else
 *   `~/.config/...`), a property list of integers, one key per setting. A setter's update reads the
 *   whole file, sets its key and rewrites the file atomically under an advisory lock on
 *   `<file>.lock`, so concurrent writers in any number of threads and processes lose no key; keys
 *   of other programs are kept. When the lock cannot be had in time, the update is not made (never
 *   an unlocked write) and the setter still returns its usual result.
 * - A @b getter of a current value reads only the settings file: the mixer is never asked. Each
 *   getter documents its answer for a missing or unreadable file and for an absent key (a default,
 *   #NVX_ERROR, or an untouched output). A value of another type than an integer counts as absent.
 * - A @b re-apply function (`NVX_SetCurrent...`, NVX_SendFXBANKFILTERModeIndex()) reads the file
 *   and sends the remembered value to every mixer again, for instance after one was plugged in. It
 *   stores nothing and announces nothing.
 * - The three @b status @b queries are the only functions that read from the mixers.
 * - Counts, menu texts and the exported tables are constants: no device, file or bus is touched.
 *
 * @section nvx_time Blocking and worst-case time
 * Every call runs to its end on the caller's thread and blocks for its work; nothing is queued.
 * The bounds given with each function add up these parts:
 * - one USB control transfer: at most 1 s (its time-out). Each function counts its transfers per
 *   connected mixer. Counting, finding and opening mixers send no transfer and never wait for
 *   another program (a held mixer fails at once as busy); they take the time the system needs to
 *   list the USB devices.
 * - one settings update: at most 3 s waiting for the file's lock by default
 *   (`MXRK7_STORE_LOCK_TIMEOUT_MS`, in milliseconds, changes the bound), then one read and one
 *   rewrite of the file with `fsync`, whose time is the disk's. Reading the file takes no lock.
 * - one announcement: at most 1 s in all (connecting to the session bus, sending, and waiting until
 *   the signal is written). Without a session bus it costs nothing.
 * - one callback registration: at most 1 s waiting for the session bus to confirm the
 *   subscription, the first time a family is registered.
 *
 * @section nvx_threads Threads
 * The library keeps no thread: none outlives a call. Every function except the callback
 * registrations may be called from any thread, also concurrently: settings updates are serialised
 * between threads and processes, and when two calls open the same mixer at the same moment, one of
 * them finds it busy and skips it. Register and Unregister functions and the callbacks belong to
 * one thread, see @ref nvx_callbacks "Callbacks". No function may be called from a signal handler.
 *
 * @section nvx_callbacks Callbacks and the GLib main loop
 * A routing or boost level change made by any process of the user (this one included) reaches
 * every process that registered a callback for it, over the user's D-Bus session bus. The callback
 * runs on the thread whose Register made the process's bus connection (normally the first
 * Register), from that thread's thread-default GLib main context, and only while that context is
 * iterated: GTK and Qt applications run it anyway; a program without a main loop runs a GMainLoop
 * or calls `g_main_context_iteration()` itself. A callback is never called from inside a setter or
 * a Register. It may call any function of the library. Call Register and Unregister on that same
 * thread. Without a session bus, registration succeeds and the callback is never called.
 *
 * @section nvx_environment Environment
 * `MXRK7_VIRTUAL_MIXERS` (a JSON file of virtual mixers used instead of USB, for demos and tests),
 * `MXRK7_USB_ID` (`vvvv:pppp`, the mixer's USB vendor and product number in hex),
 * `MXRK7_SYSROOT` (the folder of the version files and the localized texts, by default the
 * library's own `../share/mxrk7`), `XDG_CONFIG_HOME` and `HOME` (the settings file),
 * `MXRK7_STORE_LOCK_TIMEOUT_MS` (the settings update's lock bound), `LANGUAGE`, `LC_ALL`,
 * `LC_MESSAGES` and `LANG` (the language of the warning text), `DBUS_SESSION_BUS_ADDRESS` and
 * `XDG_RUNTIME_DIR` (the session bus; none is ever started).
 */

/**
 * @file NorvaneMXRK7Setup.h
 * @brief The one public header of NorvaneMXRK7Setup; the rules every function follows are on the
 *        @ref index "main page".
 */
#ifndef NORVANE_MXRK7_SETUP_H
#define NORVANE_MXRK7_SETUP_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Marks the names this library exports; every other name of the library is hidden. */
#if defined(__GNUC__)
#define NVX_API __attribute__((visibility("default")))
#else
#define NVX_API
#endif

/**
 * @defgroup nvx_results Result codes
 * @brief What every function returns.
 * @{
 */

/** Done. */
#define NVX_OK 100
/** Done, but the user should be warned: returned only by the two routing setters, whose change was
 *  made all the same; NVX_GetWarningTextForSetUSBAudioInput() gives the text to show. */
#define NVX_WARNING 101
/** Not done, or no answer: a bad argument or product id, a missing file or key where the function
 *  says so, or a mixer's answer out of range. */
#define NVX_ERROR 102
/** Returned only by NVX_IsUSBConnection(): at least one mixer is connected. */
#define NVX_CONNECTED 103
/** Returned only by NVX_IsUSBConnection(): no mixer is connected. */
#define NVX_NOT_CONNECTED 104

/** @} */

/**
 * @defgroup nvx_callback_types Callback types
 * @brief The functions a client registers to hear of changes (see @ref nvx_callbacks "Callbacks").
 * @{
 */

/**
 * @brief Called when the USB input audio routing of a channel changed.
 *
 * Runs from the GLib main context described under @ref nvx_callbacks "Callbacks", for a change
 * made by NVX_SetUSBInputAudio() in any process of the user, this one included.
 *
 * @param channel USB audio channel, 0-3 for changes this library makes. Taken from the change as
 *                received; a change that lacks it reads 0.
 * @param index   The channel's menu index, 0-7 for changes this library makes (the same rule).
 * @param context The context given to NVX_RegisterInputAudioChangedCallback().
 */
typedef void (*NVXInputAudioChangedProc)(int32_t channel, int32_t index, void *context);

/**
 * @brief Called when an index setting changed: the boost level (MIDI channel and key mode are
 *        reserved and never call one).
 *
 * Note the order: no channel, and the context comes second. Runs as NVXInputAudioChangedProc does,
 * for a change made by NVX_SetBoostLevelIndex().
 *
 * @param index   The new menu index, 0-3 for changes this library makes; a change that lacks it
 *                reads 0.
 * @param context The context given to NVX_RegisterBoostLevelChangedCallback().
 */
typedef void (*NVXIndexChangedProc)(int32_t index, void *context);

/** @} */

/**
 * @defgroup nvx_identity Product identity, version texts, connection
 * @brief Find the product id, read version texts, ask whether a mixer is connected.
 * @{
 */

/**
 * @brief Gives the product id for a product name: 0 when the name contains "MXR-K7".
 *
 * The name is upper-cased (full Unicode upper-casing, so a German sharp s becomes "SS") and searched for
 * "MXR-K7" anywhere: "mxr-k7", "MXR-K7 Setup" and "Norvane mXr-K7 mixer" all match; "MXRK7" and
 * "MXR K7" do not.
 *
 * @param[in]  name      Product name, UTF-8, NUL-terminated; may be NULL (gives #NVX_ERROR). Only
 *                       read during the call.
 * @param[out] productId Receives 0 on success; untouched otherwise. May be NULL (gives #NVX_ERROR).
 * @retval NVX_OK    The name holds the model: *productId is 0.
 * @retval NVX_ERROR @p name or @p productId is NULL, @p name is not valid UTF-8, or the model is
 *                   not in it.
 * @par Effects
 * None: no mixer, file or bus is touched.
 * @par Blocking and threads
 * Does not block. Any thread.
 */
NVX_API int32_t NVX_GetProductId(const char *name, int32_t *productId);

/**
 * @brief Gives the version of the mixer's audio driver, if a driver installed a version file.
 *
 * Reads the key "CFBundleShortVersionString" of
 * `<data root>/System/Library/Extensions/MXR-K7 USBAudio.kext/Contents/info.plist` (the data root
 * as under @ref nvx_environment "Environment"; a file named `Info.plist` in that folder is read when
 * `info.plist` is missing). On Linux the kernel's own audio driver serves the mixer and installs no
 * such file, so this normally answers #NVX_ERROR.
 *
 * Tests, in this order: @p text not NULL, @p productId 0 (the file is not read when a test fails).
 *
 * @param[in]  productId The product id, 0.
 * @param[out] text      Receives the version text on success; untouched otherwise. The text stays
 *                       valid until this function is called again on the same thread.
 * @retval NVX_OK    *text is the version; a number or boolean value is handed out as its text.
 * @retval NVX_ERROR A bad argument; the file is missing or unreadable; the key is absent or holds
 *                   a dictionary, array, data or date.
 * @par Effects
 * Reads one file. Sends, stores and announces nothing.
 * @par Blocking and threads
 * Reads one small file. Any thread.
 */
NVX_API int32_t NVX_GetDriverVersionText(int32_t productId, const char **text);

/**
 * @brief Gives the version of the setup application, from the version file it installs.
 *
 * Reads the key "CFBundleVersion" (the build version, not the short one) of
 * `<data root>/Applications/Norvane/MXR-K7/MXR-K7 Setup.app/Contents/info.plist`, found and read
 * as by NVX_GetDriverVersionText(), with the same tests in the same order and the same results.
 *
 * @param[in]  productId The product id, 0.
 * @param[out] text      Receives the version text on success; untouched otherwise. Valid until this
 *                       function is called again on the same thread.
 * @retval NVX_OK    *text is the version.
 * @retval NVX_ERROR A bad argument, a missing or unreadable file, or no usable value under the key.
 * @par Effects
 * Reads one file. Sends, stores and announces nothing.
 * @par Blocking and threads
 * Reads one small file. Any thread.
 */
NVX_API int32_t NVX_GetUtilityVersionText(int32_t productId, const char **text);

/**
 * @brief Gives this library's version, for instance "1.0.0".
 *
 * Reads the key "CFBundleVersion" of the library's own version file
 * `<data root>/System/Library/Frameworks/NorvaneMXRK7Setup.framework/Versions/A/Resources/info.plist`,
 * which the library's installation provides. Unlike the two other version functions, the file is
 * read first, before any argument is looked at; then the tests come in this order: @p productId
 * 0, @p text not NULL. The results for bad arguments are the same.
 *
 * @param[in]  productId The product id, 0.
 * @param[out] text      Receives the version text on success; untouched otherwise. Valid until this
 *                       function is called again on the same thread.
 * @retval NVX_OK    *text is the version.
 * @retval NVX_ERROR A bad argument, a missing or unreadable file, or no usable value under the key.
 * @par Effects
 * Reads one file, even when an argument is bad. Sends, stores and announces nothing.
 * @par Blocking and threads
 * Reads one small file. Any thread.
 */
NVX_API int32_t NVX_GetLibraryVersionText(int32_t productId, const char **text);

/**
 * @brief Tells whether at least one mixer is connected.
 *
 * Counts the USB devices with the mixer's vendor and product number. No mixer is opened, so a
 * mixer that this user may not open, or that another program holds, counts as connected. There is
 * no argument test: a product id other than 0 counts no mixer. A failure to reach the USB devices
 * counts as none.
 *
 * @param[in] productId The product id, 0.
 * @retval NVX_CONNECTED     At least one mixer is connected.
 * @retval NVX_NOT_CONNECTED No mixer is connected, or @p productId is not 0. Never #NVX_OK or
 *                           #NVX_ERROR.
 * @par Effects
 * Lists the USB devices. Sends no request; stores and announces nothing.
 * @par Blocking and threads
 * Lists the USB devices once; no transfer. Any thread.
 */
NVX_API int32_t NVX_IsUSBConnection(int32_t productId);

/** @} */

/**
 * @defgroup nvx_status Live mixer status
 * @brief The only functions that read from the mixers: firmware, input selectors, Serato state.
 *
 * Each one tests, in this order, its output pointer, the product id and (where there is one) the
 * channel. Without a connected mixer, or when no mixer opens, each answers #NVX_OK and leaves its
 * output untouched: preset the output to tell that case apart.
 * @{
 */

/**
 * @brief Reads the firmware number of the first connected mixer.
 *
 * Only the first mixer (in the order of bus number and port) is asked, however many are connected.
 *
 * @param[in]  productId The product id, 0.
 * @param[out] version   Receives the mixer's two-byte answer as a number, first byte low: the
 *                       answer 05 01 gives 0x0105. The upper 16 bits are 0. A failed read gives 0,
 *                       a one-byte answer that byte. Untouched when no mixer is connected or the
 *                       first one does not open.
 * @retval NVX_OK    In every case but an argument error.
 * @retval NVX_ERROR @p version is NULL or @p productId is not 0.
 * @par Effects
 * One read request to the first mixer. Stores and announces nothing.
 * @par Blocking and threads
 * At most 1 s (one transfer). Any thread.
 */
NVX_API int32_t NVX_GetFirmwareVersionIndex(int32_t productId, int32_t *version);

/**
 * @brief Reads the position of one deck's input selector on every connected mixer.
 *
 * Every mixer that opens is asked for its four selector positions (four read requests). The
 * channel indexes the answer directly: channel 1 to 4 is the selector of deck 1 to 4, and channel
 * 0 names no selector and always reads 0. (This differs on purpose from the routing setters'
 * warning, which reads deck channel + 1.) The value of each mixer is written to the output before
 * it is tested; a value above 4 ends the call at once with #NVX_ERROR and later mixers are not
 * asked. A failed or short answer reads as 0 or as an earlier answer's byte, not as an error: each
 * request asks for as many bytes as the one before it delivered.
 *
 * @param[in]  productId The product id, 0.
 * @param[in]  channel   0-4.
 * @param[out] status    Receives the position, 0-4, of the last mixer that opened; on
 *                       #NVX_ERROR from an answer, the out-of-range value. Untouched when no mixer
 *                       opens.
 * @retval NVX_OK    Every mixer asked answered 0-4 (or none opened).
 * @retval NVX_ERROR @p status is NULL, @p productId is not 0, @p channel is outside 0-4, or a
 *                   mixer answered a position above 4.
 * @par Effects
 * Four read requests to each mixer that opens. Stores and announces nothing.
 * @par Blocking and threads
 * At most 4 s per mixer (four transfers). Any thread.
 */
NVX_API int32_t NVX_GetMixerInputSelectorStatus(int32_t productId, int32_t channel, int32_t *status);

/**
 * @brief Reads whether the mixers report the Serato software as active.
 *
 * Every mixer that opens is asked (one read request). Unlike the input selector, each answer is
 * tested before it is written: an answer above 1, which includes a failed read, ends the call at
 * once with #NVX_ERROR without writing that mixer's value, and later mixers are not asked.
 *
 * @param[in]  productId The product id, 0.
 * @param[out] status    Receives 1 (active) or 0 (not active) of the last mixer that opened and
 *                       answered in range. Untouched when no mixer opens, and on #NVX_ERROR keeps
 *                       what an earlier mixer wrote.
 * @retval NVX_OK    Every mixer asked answered 0 or 1 (or none opened).
 * @retval NVX_ERROR @p status is NULL, @p productId is not 0, or a mixer's read failed or answered
 *                   above 1.
 * @par Effects
 * One read request to each mixer that opens. Stores and announces nothing.
 * @par Blocking and threads
 * At most 1 s per mixer (one transfer). Any thread.
 */
NVX_API int32_t NVX_GetMixerSeratoActiveStatus(int32_t productId, int32_t *status);

/** @} */

/**
 * @defgroup nvx_routing USB input audio routing
 * @brief Which mixer signal feeds each of the five USB audio channels the mixer sends to the
 *        computer, and the warning when a deck's input selector makes the choice pointless.
 *
 * Channels are numbered 0-4. Each channel has a menu of indices 0-7 (the texts: InputAudioText
 * through MXRK7_TEXT). The menu setter accepts channels 0-3 only, every other function 0-4.
 * The choice of channel n is stored under the key "Output<n>" of the settings file.
 * @{
 */

/**
 * @brief Gives the number of menu entries to offer for a channel: 7, 7, 7, 6, 1 for channels 0-4.
 *
 * These counts are the contract as they stand, although the text function and the setter accept
 * index 0-7 on every channel, channel 3 has only one real signal ("FX SEND") and channel 4 none.
 * Tests, in this order: product id, channel, output.
 *
 * @param[in]  productId The product id, 0.
 * @param[in]  channel   0-4.
 * @param[out] count     Receives the count on success; untouched otherwise.
 * @retval NVX_OK    *count is set.
 * @retval NVX_ERROR @p productId is not 0, @p channel is outside 0-4, or @p count is NULL.
 * @par Effects
 * None: a constant.
 * @par Blocking and threads
 * Does not block. Any thread.
 */
NVX_API int32_t NVX_GetNumOfInputAudioIndex(int32_t productId, int32_t channel, uint32_t *count);

/**
 * @brief Gives the menu text of one routing choice: `InputAudioText[MXRK7_TEXT[channel][index]]`.
 *
 * Tests, in this order: product id, channel, index, output.
 *
 * @param[in]  productId The product id, 0.
 * @param[in]  channel   0-4.
 * @param[in]  index     Menu index, 0-7 on every channel (entries without a signal read "None").
 * @param[in]  unused    Ignored; any value is accepted, pass 0.
 * @param[out] text      Receives a table text, valid for the life of the process; untouched on
 *                       #NVX_ERROR.
 * @retval NVX_OK    *text is set.
 * @retval NVX_ERROR @p productId is not 0, @p channel or @p index is out of range, or @p text is
 *                   NULL.
 * @par Effects
 * None: a table entry.
 * @par Blocking and threads
 * Does not block. Any thread.
 */
NVX_API int32_t NVX_GetUSBInputAudioText(int32_t productId, int32_t channel, uint32_t index, intptr_t unused,
                                         const char **text);

/**
 * @brief Routes a mixer signal to a USB audio channel by menu index, on every connected mixer.
 *
 * In this order: sends the routing code of [channel][index] to every mixer that opens; stores
 * "Output<channel>" = @p index; announces the routing change (callbacks get channel and index);
 * then, when mixers were counted, reads the input selectors of each mixer that opens, in turn,
 * until one warns. Channels 0 and 1 carry decks 1 and 2: they warn when that deck's selector is at
 * a position below 8 other than 4. Channels 2 and 3 never warn, but the selectors are read all
 * the same. The change is sent, stored and announced whatever the warning check finds.
 *
 * Tests, in this order: product id, channel, index.
 *
 * @param[in] productId The product id, 0.
 * @param[in] channel   0-3. Channel 4 is refused here, although other functions accept it.
 * @param[in] index     Menu index, 0-7.
 * @retval NVX_OK      Done: no connected mixer, or no mixer's selector gives cause to warn.
 * @retval NVX_WARNING Done, but a mixer's input selector does not feed the chosen signal: show the
 *                     text of NVX_GetWarningTextForSetUSBAudioInput().
 * @retval NVX_ERROR   A bad argument; nothing was sent, stored or announced.
 * @par Effects
 * Sends one write to each mixer, stores one key, announces one routing change, then reads the
 * input selectors (four reads per mixer until one warns).
 * @par Blocking and threads
 * At most 5 s per mixer (one write and four reads), plus one settings update (3 s) and one
 * announcement (1 s). Any thread.
 */
NVX_API int32_t NVX_SetUSBInputAudio(int32_t productId, int32_t channel, uint32_t index);

/**
 * @brief Sends a raw routing code to every connected mixer, without storing or announcing it.
 *
 * The 16-bit code is: bits 15-12 `group + 1` modulo 16 (so group -1 and group 15 both give 0),
 * bits 11-8 `channel + 1`, bits 7-0 @p source. Channel 1, group 0, source 3 sends 0x1203.
 * The warning rule differs on purpose from NVX_SetUSBInputAudio(): with no mixer connected,
 * sources 0-2 warn; otherwise each mixer that opens has its selectors read in turn, and the call
 * warns at the first whose selector of deck channel + 1 is not at position 5 while @p source is
 * below 5. (Channel 4 names no selector, which reads 0: there sources 0-4 always warn.)
 *
 * Tests, in this order: product id, channel, source.
 *
 * @param[in] productId The product id, 0.
 * @param[in] channel   0-4.
 * @param[in] group     Any value; only its low 4 bits count, as above.
 * @param[in] source    The mixer's source code, 0-15.
 * @retval NVX_OK      Sent, no warning.
 * @retval NVX_WARNING Sent, but the input selector does not fit (or, with no mixer, a source
 *                     below 3).
 * @retval NVX_ERROR   A bad argument; nothing was sent.
 * @par Effects
 * Sends one write to each mixer, then reads the input selectors. Stores and announces nothing.
 * @par Blocking and threads
 * At most 5 s per mixer (one write and four reads). Any thread.
 */
NVX_API int32_t NVX_SetUSBInputAudioDirect(int32_t productId, int32_t channel, int32_t group, uint32_t source);

/**
 * @brief Gives the warning text to show after a routing setter returned #NVX_WARNING.
 *
 * Language 99 gives the "WARNING2" text of the localized texts in the user's language: the first
 * of `LANGUAGE` (each of its colon-separated entries in turn), `LC_ALL`, `LC_MESSAGES` and `LANG`
 * that is set decides; a language without a localization, "C" and "POSIX" read English. Languages
 * 0-11 (English, Japanese, French, German, Italian, Dutch, Spanish, Russian, Portuguese,
 * simplified Chinese, traditional Chinese, Korean) read that localization's texts but leave
 * @p text untouched and answer #NVX_OK: only language 99 yields a text. This is the contract.
 *
 * Tests, in this order: product id, channel, result code, output, language.
 *
 * @param[in]  productId  The product id, 0.
 * @param[in]  channel    0-4; not used otherwise (the text is the same for every channel).
 * @param[in]  resultCode The routing setter's result; must be #NVX_WARNING.
 * @param[in]  language   99 for the user's language; 0-11 as above.
 * @param[out] text       Language 99: receives the text, valid until this function is called again
 *                        on the same thread; NULL when the localized texts are not installed; the
 *                        key itself, "WARNING2", when the text is missing. Untouched for languages
 *                        0-11 and on #NVX_ERROR.
 * @retval NVX_OK    Language 99 or 0-11.
 * @retval NVX_ERROR @p productId is not 0, @p channel is outside 0-4, @p resultCode is not
 *                   #NVX_WARNING, @p text is NULL, or @p language is neither 0-11 nor 99.
 * @par Effects
 * Reads one file of localized texts. Sends, stores and announces nothing.
 * @par Blocking and threads
 * Reads one or two small files. Any thread.
 */
NVX_API int32_t NVX_GetWarningTextForSetUSBAudioInput(int32_t productId, int32_t channel, int32_t resultCode,
                                                      int32_t language, const char **text);

/**
 * @brief Gives the stored menu index of a channel (0 when none is stored).
 *
 * Reads "Output<channel>" from the settings file; the mixer is not asked. The stored number is
 * handed out whole, without a range test (an edited file can yield any number; a negative one
 * arrives as its 32-bit two's complement). "Output4" is never written by this library.
 *
 * Tests, in this order: product id, channel, output.
 *
 * @param[in]  productId The product id, 0.
 * @param[in]  channel   0-4.
 * @param[out] index     Receives the stored index, or 0 when the file is missing or unreadable or
 *                       the key is absent. Untouched on #NVX_ERROR.
 * @retval NVX_OK    *index is set.
 * @retval NVX_ERROR @p productId is not 0, @p channel is outside 0-4, or @p index is NULL.
 * @par Effects
 * Reads the settings file. Sends, stores and announces nothing.
 * @par Blocking and threads
 * Reads the settings file once; takes no lock. Any thread.
 */
NVX_API int32_t NVX_GetCurrentUSBInputAudioIndex(int32_t productId, int32_t channel, uint32_t *index);

/**
 * @brief Sends a channel's stored routing choice to every connected mixer again.
 *
 * Reads the index as NVX_GetCurrentUSBInputAudioIndex() does (0 when none is stored) and sends
 * its routing code. Channel 4, which the menu setter refuses, is reachable here. A stored index
 * outside 0-7 (an edited file) sends nothing. No warning check is made.
 *
 * @param[in] productId The product id, 0.
 * @param[in] channel   0-4.
 * @retval NVX_OK    Sent to every mixer that opened (also with no mixer, or nothing sent for an
 *                   index outside 0-7).
 * @retval NVX_ERROR @p productId is not 0 or @p channel is outside 0-4.
 * @par Effects
 * Reads the settings file, sends one write to each mixer. Stores and announces nothing.
 * @par Blocking and threads
 * At most 1 s per mixer (one transfer). Any thread.
 */
NVX_API int32_t NVX_SetCurrentUSBInputAudio(int32_t productId, int32_t channel);

/** @} */

/**
 * @defgroup nvx_boost Boost level
 * @brief The level of the mixer's USB audio output to the computer, in four steps (BoostLevelText).
 *
 * The choice is stored under "MaxLevel" of the settings file.
 * @{
 */

/**
 * @brief Gives the number of boost levels: 4.
 *
 * Tests, in this order: product id, output.
 *
 * @param[in]  productId The product id, 0.
 * @param[out] count     Receives 4 on success; untouched otherwise.
 * @retval NVX_OK    *count is 4.
 * @retval NVX_ERROR @p productId is not 0 or @p count is NULL.
 * @par Effects
 * None: a constant.
 * @par Blocking and threads
 * Does not block. Any thread.
 */
NVX_API int32_t NVX_GetNumOfBoostLevelIndex(int32_t productId, uint32_t *count);

/**
 * @brief Gives the menu text of a boost level: "-5 dB", "-10 dB", "-15 dB", "-19 dB".
 *
 * Tests, in this order: product id, output, index.
 *
 * @param[in]  productId The product id, 0.
 * @param[in]  index     0-3.
 * @param[in]  unused    Ignored; any value is accepted, pass 0.
 * @param[out] text      Receives a table text, valid for the life of the process; untouched on
 *                       #NVX_ERROR.
 * @retval NVX_OK    *text is set.
 * @retval NVX_ERROR @p productId is not 0, @p text is NULL, or @p index is above 3.
 * @par Effects
 * None: a table entry.
 * @par Blocking and threads
 * Does not block. Any thread.
 */
NVX_API int32_t NVX_GetBoostLevelText(int32_t productId, uint32_t index, intptr_t unused, const char **text);

/**
 * @brief Sets the boost level on every connected mixer, stores it and announces it.
 *
 * Sends the level's code in the high byte (index 0-3 send 0x0300, 0x0200, 0x0100, 0x0000), stores
 * "MaxLevel" = @p index, and announces the boost level change (callbacks get the index). Never
 * warns.
 *
 * Tests, in this order: product id, index.
 *
 * @param[in] productId The product id, 0.
 * @param[in] index     0-3.
 * @retval NVX_OK    Done, whatever the mixers and the file did.
 * @retval NVX_ERROR A bad argument; nothing was sent, stored or announced.
 * @par Effects
 * Sends one write to each mixer, stores one key, announces one boost level change.
 * @par Blocking and threads
 * At most 1 s per mixer (one transfer), plus one settings update (3 s) and one announcement (1 s).
 * Any thread.
 */
NVX_API int32_t NVX_SetBoostLevelIndex(int32_t productId, uint32_t index);

/**
 * @brief Gives the stored boost level (3, "-19 dB", when none is stored).
 *
 * Reads "MaxLevel" from the settings file and hands the number out whole, without a range test.
 * Tests, in this order: product id, output.
 *
 * @param[in]  productId The product id, 0.
 * @param[out] index     Receives the stored level, or 3 when the file is missing or unreadable or
 *                       the key is absent. Untouched on #NVX_ERROR.
 * @retval NVX_OK    *index is set.
 * @retval NVX_ERROR @p productId is not 0 or @p index is NULL.
 * @par Effects
 * Reads the settings file. Sends, stores and announces nothing.
 * @par Blocking and threads
 * Reads the settings file once; takes no lock. Any thread.
 */
NVX_API int32_t NVX_GetCurrentBoostLevelIndex(int32_t productId, uint32_t *index);

/**
 * @brief Sends the stored boost level to every connected mixer again.
 *
 * Reads the level as NVX_GetCurrentBoostLevelIndex() does (3 when none is stored). A stored 4 is
 * accepted and sends 0x0000, as level 3 does: the re-apply admits one level more than the setter,
 * on purpose.
 *
 * @param[in] productId The product id, 0.
 * @retval NVX_OK    Sent to every mixer that opened (also with no mixer).
 * @retval NVX_ERROR @p productId is not 0, or the stored level is above 4 (negative included);
 *                   nothing was sent.
 * @par Effects
 * Reads the settings file, sends one write to each mixer. Stores and announces nothing.
 * @par Blocking and threads
 * At most 1 s per mixer (one transfer). Any thread.
 */
NVX_API int32_t NVX_SetCurrentBoostLevelIndex(int32_t productId);

/** @} */

/**
 * @defgroup nvx_midi MIDI channel and key mode (reserved)
 * @brief Reserved by the interface and not offered by this mixer: every function refuses.
 *
 * Each function reads none of its arguments and returns #NVX_ERROR at once: it writes no output,
 * sends nothing, stores nothing and registers nothing. They exist so that programs written for the
 * whole interface link. MidiChannelText and MidiKeyModeText hold the menu texts all the same.
 * None of them blocks; any thread.
 * @{
 */

/**
 * @brief Reserved: always #NVX_ERROR.
 * @param[in]  productId Ignored.
 * @param[out] count     Not written.
 * @retval NVX_ERROR Always.
 * @par Effects
 * None.
 * @par Blocking and threads
 * Does not block. Any thread.
 */
NVX_API int32_t NVX_GetNumOfMidiChannelIndex(int32_t productId, uint32_t *count);
/**
 * @brief Reserved: always #NVX_ERROR.
 * @param[in]  productId Ignored.
 * @param[in]  index     Ignored.
 * @param[in]  unused    Ignored.
 * @param[out] text      Not written.
 * @retval NVX_ERROR Always.
 * @par Effects
 * None.
 * @par Blocking and threads
 * Does not block. Any thread.
 */
NVX_API int32_t NVX_GetMidiChannelText(int32_t productId, uint32_t index, intptr_t unused, const char **text);
/**
 * @brief Reserved: always #NVX_ERROR; nothing is sent or stored.
 * @param[in] productId Ignored.
 * @param[in] index     Ignored.
 * @retval NVX_ERROR Always.
 * @par Effects
 * None.
 * @par Blocking and threads
 * Does not block. Any thread.
 */
NVX_API int32_t NVX_SetMidiChannelIndex(int32_t productId, uint32_t index);
/**
 * @brief Reserved: always #NVX_ERROR.
 * @param[in]  productId Ignored.
 * @param[out] index     Not written.
 * @retval NVX_ERROR Always.
 * @par Effects
 * None.
 * @par Blocking and threads
 * Does not block. Any thread.
 */
NVX_API int32_t NVX_GetCurrentMidiChannelIndex(int32_t productId, uint32_t *index);
/**
 * @brief Reserved: always #NVX_ERROR; nothing is sent.
 * @param[in] productId Ignored.
 * @retval NVX_ERROR Always.
 * @par Effects
 * None.
 * @par Blocking and threads
 * Does not block. Any thread.
 */
NVX_API int32_t NVX_SetCurrentMidiChannelIndex(int32_t productId);
/**
 * @brief Reserved: always #NVX_ERROR.
 * @param[in]  productId Ignored.
 * @param[out] count     Not written.
 * @retval NVX_ERROR Always.
 * @par Effects
 * None.
 * @par Blocking and threads
 * Does not block. Any thread.
 */
NVX_API int32_t NVX_GetNumOfMidiKeyModeIndex(int32_t productId, uint32_t *count);
/**
 * @brief Reserved: always #NVX_ERROR.
 * @param[in]  productId Ignored.
 * @param[in]  index     Ignored.
 * @param[in]  unused    Ignored.
 * @param[out] text      Not written.
 * @retval NVX_ERROR Always.
 * @par Effects
 * None.
 * @par Blocking and threads
 * Does not block. Any thread.
 */
NVX_API int32_t NVX_GetMidiKeyModeText(int32_t productId, uint32_t index, intptr_t unused, const char **text);
/**
 * @brief Reserved: always #NVX_ERROR; nothing is sent or stored.
 * @param[in] productId Ignored.
 * @param[in] index     Ignored.
 * @retval NVX_ERROR Always.
 * @par Effects
 * None.
 * @par Blocking and threads
 * Does not block. Any thread.
 */
NVX_API int32_t NVX_SetMidiKeyModeIndex(int32_t productId, uint32_t index);
/**
 * @brief Reserved: always #NVX_ERROR.
 * @param[in]  productId Ignored.
 * @param[out] index     Not written.
 * @retval NVX_ERROR Always.
 * @par Effects
 * None.
 * @par Blocking and threads
 * Does not block. Any thread.
 */
NVX_API int32_t NVX_GetCurrentMidiKeyModeIndex(int32_t productId, uint32_t *index);
/**
 * @brief Reserved: always #NVX_ERROR; nothing is sent.
 * @param[in] productId Ignored.
 * @retval NVX_ERROR Always.
 * @par Effects
 * None.
 * @par Blocking and threads
 * Does not block. Any thread.
 */
NVX_API int32_t NVX_SetCurrentMidiKeyModeIndex(int32_t productId);
/**
 * @brief Reserved: always #NVX_ERROR; no callback is stored (MidiChannelChangedCallbackFunc stays
 *        NULL).
 * @param[in] productId Ignored.
 * @param[in] callback  Ignored.
 * @param[in] context   Ignored.
 * @retval NVX_ERROR Always.
 * @par Effects
 * None.
 * @par Blocking and threads
 * Does not block. Any thread.
 */
NVX_API int32_t NVX_RegisterMidiChannelChangedCallback(int32_t productId, NVXIndexChangedProc callback, void *context);
/**
 * @brief Reserved: always #NVX_ERROR.
 * @param[in] productId Ignored.
 * @retval NVX_ERROR Always.
 * @par Effects
 * None.
 * @par Blocking and threads
 * Does not block. Any thread.
 */
NVX_API int32_t NVX_UnregisterMidiChannelChangedCallback(int32_t productId);
/**
 * @brief Reserved: always #NVX_ERROR; no callback is stored (MidiKeyModeChangedCallbackFunc stays
 *        NULL).
 * @param[in] productId Ignored.
 * @param[in] callback  Ignored.
 * @param[in] context   Ignored.
 * @retval NVX_ERROR Always.
 * @par Effects
 * None.
 * @par Blocking and threads
 * Does not block. Any thread.
 */
NVX_API int32_t NVX_RegisterMidiKeyModeChangedCallback(int32_t productId, NVXIndexChangedProc callback, void *context);
/**
 * @brief Reserved: always #NVX_ERROR.
 * @param[in] productId Ignored.
 * @retval NVX_ERROR Always.
 * @par Effects
 * None.
 * @par Blocking and threads
 * Does not block. Any thread.
 */
NVX_API int32_t NVX_UnregisterMidiKeyModeChangedCallback(int32_t productId);

/** @} */

/**
 * @defgroup nvx_callbacks_group Change callbacks
 * @brief Hear of routing and boost level changes made by any process of the user.
 *
 * Each family has one callback and one context slot (InputAudioChangedCallbackFunc and
 * InputAudioChangedContext, BoostLevelChangedCallbackFunc and BoostLevelChangedContext). The rules
 * for threads and the GLib main loop are under @ref nvx_callbacks "Callbacks".
 * @{
 */

/**
 * @brief Registers the function called for every routing change, replacing an earlier one.
 *
 * The first registration in a process connects to the session bus (the connection is driven from
 * the calling thread's thread-default GLib main context and kept for the life of the process) and
 * subscribes to routing changes, waiting until the bus confirms, so that a change made right after
 * the call returns is seen. Later registrations only replace the callback and context: a change
 * calls the callback once however often it was registered. Each registration also sets
 * inputAudioInfo to NULL. A NULL @p callback acts as NVX_UnregisterInputAudioChangedCallback(): it
 * empties the callback slot and stores nothing, not even the context. Without a session bus the
 * call succeeds and the callback is never called.
 *
 * @param[in] productId The product id, 0.
 * @param[in] callback  Called as `callback(channel, index, context)` for each change; NULL to
 *                      unregister.
 * @param[in] context   Handed back to @p callback unchanged; never read by the library. It must
 *                      stay valid as long as the callback stays registered.
 * @retval NVX_OK    Registered (or unregistered, for a NULL @p callback).
 * @retval NVX_ERROR @p productId is not 0 (nothing changes), or memory ran out.
 * @par Effects
 * Connects to the session bus and subscribes, the first time. Sends to no mixer; stores nothing.
 * @par Blocking and threads
 * At most 1 s when it subscribes (the first registration of routing callbacks in the process,
 * and again after the bus connection was lost or in a forked child); otherwise it does not block.
 * Call it on the thread whose GLib main context is to run the callbacks.
 */
NVX_API int32_t NVX_RegisterInputAudioChangedCallback(int32_t productId, NVXInputAudioChangedProc callback,
                                                      void *context);

/**
 * @brief Stops calls of the routing callback.
 *
 * Empties the callback slot only: the context slot keeps its value and the subscription stays, so
 * changes still arrive and are dropped until a callback is registered again. A change that had
 * arrived but was not yet delivered is dropped too.
 *
 * @param[in] productId The product id, 0.
 * @retval NVX_OK    The slot is empty.
 * @retval NVX_ERROR @p productId is not 0.
 * @par Effects
 * Empties InputAudioChangedCallbackFunc. Nothing else.
 * @par Blocking and threads
 * Does not block. Call it on the thread that registered.
 */
NVX_API int32_t NVX_UnregisterInputAudioChangedCallback(int32_t productId);

/**
 * @brief Registers the function called for every boost level change, replacing an earlier one.
 *
 * As NVX_RegisterInputAudioChangedCallback(), for boost level changes: the callback gets
 * `(index, context)`, and boostLevelInfo is set to NULL.
 *
 * @param[in] productId The product id, 0.
 * @param[in] callback  Called as `callback(index, context)` for each change; NULL to unregister.
 * @param[in] context   Handed back to @p callback unchanged; never read by the library.
 * @retval NVX_OK    Registered (or unregistered, for a NULL @p callback).
 * @retval NVX_ERROR @p productId is not 0 (nothing changes), or memory ran out.
 * @par Effects
 * Connects to the session bus and subscribes, the first time. Sends to no mixer; stores nothing.
 * @par Blocking and threads
 * At most 1 s when it subscribes (the first registration of boost level callbacks in the
 * process, and as for routing callbacks); otherwise it does not block. Call it on the thread whose
 * GLib main context is to run the callbacks.
 */
NVX_API int32_t NVX_RegisterBoostLevelChangedCallback(int32_t productId, NVXIndexChangedProc callback, void *context);

/**
 * @brief Stops calls of the boost level callback, as NVX_UnregisterInputAudioChangedCallback() does.
 *
 * @param[in] productId The product id, 0.
 * @retval NVX_OK    The slot is empty.
 * @retval NVX_ERROR @p productId is not 0.
 * @par Effects
 * Empties BoostLevelChangedCallbackFunc. Nothing else.
 * @par Blocking and threads
 * Does not block. Call it on the thread that registered.
 */
NVX_API int32_t NVX_UnregisterBoostLevelChangedCallback(int32_t productId);

/** @} */

/**
 * @defgroup nvx_fx_filter FX banks: filter mode
 * @brief The filter assignment (mode and parameter byte) of each FX bank, its replay, and the
 *        shared current index.
 *
 * Banks: 0 bank A, 1 bank B, 2 the temporary bank (FXBANKKeyText). A bank's filter word is
 * `bank << 12 | mode << 8 | param` (16 bits); it is both sent and stored, under "BANKA_FILTER",
 * "BANKB_FILTER" or "TEMPORARY_FILTER". The "current index" is the number stored under "PopUp"
 * (the first entry of FXBANKBFXItemText), shared with the current beat effect; this library never
 * writes it, another program may.
 * @{
 */

/**
 * @brief Sets one bank's filter mode and parameter on every connected mixer and stores it.
 *
 * Bank B, "PITCH" (3), parameter 0x40 sends and stores 0x1340. Tests, in this order: product id,
 * bank, mode.
 *
 * @param[in] productId The product id, 0.
 * @param[in] bank      0-2.
 * @param[in] mode      0-4, an index of FXBANKFilterModeText.
 * @param[in] param     The parameter byte, carried as it is; only the low 8 bits are used, no range
 *                      test.
 * @retval NVX_OK    Done, whatever the mixers and the file did.
 * @retval NVX_ERROR A bad argument; nothing was sent or stored.
 * @par Effects
 * Sends one write to each mixer, stores the bank's key. Announces nothing.
 * @par Blocking and threads
 * At most 1 s per mixer (one transfer), plus one settings update (3 s). Any thread.
 */
NVX_API int32_t NVX_SetFXBANKFILTERModeIndex(int32_t productId, uint32_t bank, uint32_t mode, uint32_t param);

/**
 * @brief Sends the three stored filter words, banks A, B and temporary in this order, to every
 *        connected mixer.
 *
 * Each stored word is sent as it stands: its bank bits are not compared with its key, and a
 * missing key sends the word 0 (bank A, "DUB ECHO", parameter 0), also for the B and temporary
 * keys. This is the contract. The mixers are counted before the file is tested.
 *
 * @param[in] productId The product id, 0.
 * @retval NVX_OK    Sent to every mixer that opened (also with no mixer).
 * @retval NVX_ERROR @p productId is not 0, or the settings file is missing or unreadable; nothing
 *                   was sent.
 * @par Effects
 * Reads the settings file, sends three writes to each mixer. Stores and announces nothing.
 * @par Blocking and threads
 * At most 3 s per mixer (three transfers). Any thread.
 */
NVX_API int32_t NVX_SendFXBANKFILTERModeIndex(int32_t productId);

/**
 * @brief Gives one bank's stored filter mode and parameter.
 *
 * Decodes the stored word: the mode is bits 8-11 (0-15: no range test, so an edited file can give
 * 5-15), the parameter bits 0-7; the bank bits are ignored. Tests, in this order: bank, @p mode,
 * @p param, product id.
 *
 * @param[in]  productId The product id, 0.
 * @param[in]  bank      0-2.
 * @param[out] mode      Receives the mode when the key holds a number; untouched otherwise.
 * @param[out] param     Receives the parameter byte under the same rule.
 * @retval NVX_OK    Both outputs set, or, when the bank's key is absent, both untouched.
 * @retval NVX_ERROR A bad argument, or the settings file is missing or unreadable (outputs
 *                   untouched).
 * @par Effects
 * Reads the settings file. Sends, stores and announces nothing.
 * @par Blocking and threads
 * Reads the settings file once; takes no lock. Any thread.
 */
NVX_API int32_t NVX_GetFXBANKFILTERModeIndex(int32_t productId, uint32_t bank, uint32_t *mode, uint32_t *param);

/**
 * @brief Gives the name of a filter mode (FXBANKFilterModeText).
 *
 * Index 5, one past the last name, is admitted on purpose: it gives the table's NULL end entry
 * with #NVX_OK. Tests, in this order: product id, output, index.
 *
 * @param[in]  productId The product id, 0.
 * @param[in]  index     0-5.
 * @param[in]  unused    Ignored; any value is accepted, pass 0.
 * @param[out] text      Receives a table text (NULL for index 5), valid for the life of the
 *                       process; untouched on #NVX_ERROR.
 * @retval NVX_OK    *text is set.
 * @retval NVX_ERROR @p productId is not 0, @p text is NULL, or @p index is above 5.
 * @par Effects
 * None: a table entry.
 * @par Blocking and threads
 * Does not block. Any thread.
 */
NVX_API int32_t NVX_GetFXBANKFILTERModeText(int32_t productId, uint32_t index, intptr_t unused, const char **text);

/**
 * @brief Gives the number of filter modes: 5.
 *
 * Tests, in this order: output, product id.
 *
 * @param[in]  productId The product id, 0.
 * @param[out] count     Receives 5 on success; untouched otherwise.
 * @retval NVX_OK    *count is 5.
 * @retval NVX_ERROR @p count is NULL or @p productId is not 0.
 * @par Effects
 * None: a constant.
 * @par Blocking and threads
 * Does not block. Any thread.
 */
NVX_API int32_t NVX_GetNumOfFXBANKFILTERModeIndex(int32_t productId, uint32_t *count);

/**
 * @brief Gives the current filter mode index: the number stored under "PopUp" (0 when none).
 *
 * The number is handed out whole, without a range test or mask. It is the same number as the
 * current beat effect of NVX_GetCurrentFXBANKBEATEFFECTModeIndex(). Tests, in this order:
 * output, product id.
 *
 * @param[in]  productId The product id, 0.
 * @param[out] index     Receives the stored number, or 0 when the file is missing or unreadable or
 *                       the key is absent. Untouched on #NVX_ERROR.
 * @retval NVX_OK    *index is set.
 * @retval NVX_ERROR @p index is NULL or @p productId is not 0.
 * @par Effects
 * Reads the settings file. Sends, stores and announces nothing.
 * @par Blocking and threads
 * Reads the settings file once; takes no lock. Any thread.
 */
NVX_API int32_t NVX_GetCurrentFXBANKFILTERModeIndex(int32_t productId, uint32_t *index);

/**
 * @brief Sends the current filter mode index to every connected mixer as a bank A filter word.
 *
 * Reads the index as NVX_GetCurrentFXBANKFILTERModeIndex() does and sends `index << 8` (bank A,
 * parameter 0).
 *
 * @param[in] productId The product id, 0.
 * @retval NVX_OK    Sent to every mixer that opened (also with no mixer).
 * @retval NVX_ERROR @p productId is not 0, or the index is above 4; nothing was sent.
 * @par Effects
 * Reads the settings file, sends one write to each mixer. Stores and announces nothing.
 * @par Blocking and threads
 * At most 1 s per mixer (one transfer). Any thread.
 */
NVX_API int32_t NVX_SetCurrentFXBANKFILTERModeIndex(int32_t productId);

/** @} */

/**
 * @defgroup nvx_fx_beat FX banks: beat FX
 * @brief Type, depth and beat of the six beat FX positions of each bank, the beat effect list, and
 *        the current beat effect.
 *
 * Positions 0-5 (named by FXBANKBFXPositionText, "BTFX_1" to "BTFX_6"); items 0 "FXType" (an
 * index of BFXTypeText, 0-14), 1 "Deprh" (depth, any byte) and 2 "BEAT" (a code 0-54), named by
 * FXBANKBFXtypeText. The beat FX word is `bank << 14 | position << 11 | item << 8 | value`
 * (16 bits); it is both sent and stored, under "BFX_BANKA<position>_<item>", "BFX_BANKB..." or
 * "BFX_TEMP..." (bank B, position 3, item 1: "BFX_BANKB3_1"). The `slot` argument of the effect
 * list functions is only range-tested (0-6).
 * @{
 */

/**
 * @brief Sets one item of one beat FX position of a bank on every connected mixer and stores it.
 *
 * Bank B, position 3, item 0, value 9 sends and stores 0x5809. The bank is not tested at all: any
 * bank is sent (bits 15-14 of the word), but only banks 0-2 have a key, so a higher bank stores
 * nothing and still answers #NVX_OK. Tests, in this order: product id, position, item.
 *
 * @param[in] productId The product id, 0.
 * @param[in] bank      0-2 to store; any value is sent.
 * @param[in] position  0-5.
 * @param[in] item      0-2.
 * @param[in] value     The item's value; only the low 8 bits are used, no range test.
 * @retval NVX_OK    Done, whatever the mixers and the file did.
 * @retval NVX_ERROR A bad argument; nothing was sent or stored.
 * @par Effects
 * Sends one write to each mixer, stores one key (banks 0-2). Announces nothing.
 * @par Blocking and threads
 * At most 1 s per mixer (one transfer), plus one settings update (3 s). Any thread.
 */
NVX_API int32_t NVX_SetFXBANKBFXModeIndex(int32_t productId, uint32_t bank, uint32_t position, uint32_t item,
                                          uint32_t value);

/**
 * @brief Gives the stored value of one item of one beat FX position of a bank.
 *
 * Takes the low byte of the stored word (its bank, position and item bits are ignored) and hands
 * it out within the item's limit: "FXType" at most 14, "Deprh" any byte, "BEAT" at most 54. A
 * stored value above the limit leaves the output untouched and still answers #NVX_OK. The item is
 * not tested: an item above 2 reads the key ending in that number and, when it exists, writes 0.
 * Tests, in this order: product id, output, position; then the file is read; then the bank.
 *
 * @param[in]  productId The product id, 0.
 * @param[in]  bank      0-2 (tested only after the settings file was read).
 * @param[in]  position  0-5.
 * @param[in]  item      0-2 as above.
 * @param[out] value     Receives the value when the key holds one within the item's limit;
 *                       untouched otherwise.
 * @retval NVX_OK    *value set, or untouched (key absent, or a value above the item's limit).
 * @retval NVX_ERROR A bad product id, output or position; the settings file is missing or
 *                   unreadable; or @p bank is above 2.
 * @par Effects
 * Reads the settings file (also for a bad bank). Sends, stores and announces nothing.
 * @par Blocking and threads
 * Reads the settings file once; takes no lock. Any thread.
 */
NVX_API int32_t NVX_GetFXBANKBFXModeIndex(int32_t productId, uint32_t bank, uint32_t position, uint32_t item,
                                          uint32_t *value);

/**
 * @brief Gives the name of a beat effect (BFXTypeText).
 *
 * Index 15, one past the last name, is admitted on purpose: it gives the table's NULL end entry
 * with #NVX_OK. Tests, in this order: product id, output, slot, index.
 *
 * @param[in]  productId The product id, 0.
 * @param[in]  slot      0-6; only tested.
 * @param[in]  index     0-15.
 * @param[in]  unused    Ignored; any value is accepted, pass 0.
 * @param[out] text      Receives a table text (NULL for index 15), valid for the life of the
 *                       process; untouched on #NVX_ERROR.
 * @retval NVX_OK    *text is set.
 * @retval NVX_ERROR @p productId is not 0, @p text is NULL, or @p slot or @p index is out of range.
 * @par Effects
 * None: a table entry.
 * @par Blocking and threads
 * Does not block. Any thread.
 */
NVX_API int32_t NVX_GetFXBANKBEATEFFECTModeText(int32_t productId, uint32_t slot, uint32_t index, intptr_t unused,
                                                const char **text);

/**
 * @brief Gives the number of beat effects: 15.
 *
 * Tests, in this order: product id, output, slot.
 *
 * @param[in]  productId The product id, 0.
 * @param[in]  slot      0-6; only tested.
 * @param[out] count     Receives 15 on success; untouched otherwise.
 * @retval NVX_OK    *count is 15.
 * @retval NVX_ERROR @p productId is not 0, @p count is NULL, or @p slot is above 6.
 * @par Effects
 * None: a constant.
 * @par Blocking and threads
 * Does not block. Any thread.
 */
NVX_API int32_t NVX_GetNumOfFXBANKBEATEFFECTModeIndex(int32_t productId, uint32_t slot, uint32_t *count);

/**
 * @brief Gives the current beat effect index: the number stored under "PopUp" (0 when none).
 *
 * The same number as NVX_GetCurrentFXBANKFILTERModeIndex() gives, handed out whole. Tests, in this
 * order: product id, output, slot.
 *
 * @param[in]  productId The product id, 0.
 * @param[in]  slot      0-6; only tested.
 * @param[out] index     Receives the stored number, or 0 when the file is missing or unreadable or
 *                       the key is absent. Untouched on #NVX_ERROR.
 * @retval NVX_OK    *index is set.
 * @retval NVX_ERROR @p productId is not 0, @p index is NULL, or @p slot is above 6.
 * @par Effects
 * Reads the settings file. Sends, stores and announces nothing.
 * @par Blocking and threads
 * Reads the settings file once; takes no lock. Any thread.
 */
NVX_API int32_t NVX_GetCurrentFXBANKBEATEFFECTModeIndex(int32_t productId, uint32_t slot, uint32_t *index);

/**
 * @brief Sends the current beat effect index to every connected mixer.
 *
 * Reads the index as NVX_GetCurrentFXBANKBEATEFFECTModeIndex() does and sends `index << 8` with
 * the beat FX request: the index in the high byte, not the setter's word layout. Index 15, one
 * past the last effect, is admitted on purpose.
 *
 * @param[in] productId The product id, 0.
 * @param[in] slot      0-6; only tested.
 * @retval NVX_OK    Sent to every mixer that opened (also with no mixer).
 * @retval NVX_ERROR @p productId is not 0, @p slot is above 6, or the index is above 15; nothing
 *                   was sent.
 * @par Effects
 * Reads the settings file, sends one write to each mixer. Stores and announces nothing.
 * @par Blocking and threads
 * At most 1 s per mixer (one transfer). Any thread.
 */
NVX_API int32_t NVX_SetCurrentFXBANKBEATEFFECTModeIndex(int32_t productId, uint32_t slot);

/** @} */

/**
 * @defgroup nvx_fx_fader_tail FX banks: channel fader mode and beat FX tail
 * @brief Two more per-bank settings. Both setters accept a bank 3, which the mixer receives in
 *        bits 15-12 as it stands.
 * @{
 */

/**
 * @brief Sets a bank's channel fader mode on every connected mixer and stores it.
 *
 * The word `bank << 12 | mode` is sent and stored. Bank 0 stores under "CHFADERBANK_A"; banks 1,
 * 2 and 3 all store under "CHFADERBANK_B", each overwriting the others' word. No function reads
 * these keys back. Tests, in this order: product id, bank, mode.
 *
 * @param[in] productId The product id, 0.
 * @param[in] bank      0-3.
 * @param[in] mode      0-3, an index of FXBANKChFaderModeText.
 * @retval NVX_OK    Done, whatever the mixers and the file did.
 * @retval NVX_ERROR A bad argument; nothing was sent or stored.
 * @par Effects
 * Sends one write to each mixer, stores one key. Announces nothing.
 * @par Blocking and threads
 * At most 1 s per mixer (one transfer), plus one settings update (3 s). Any thread.
 */
NVX_API int32_t NVX_SetFXBANKCHFADERModeIndex(int32_t productId, uint32_t bank, uint32_t mode);

/**
 * @brief Sets a bank's beat FX tail (0 or 1) on every connected mixer and stores it.
 *
 * The word `bank << 12 | tail` is sent, then stored under "TAIL_BANK_A", "TAIL_BANK_B" or
 * "TAIL_TEMP". Bank 3 is sent to the mixers first and refused afterwards: #NVX_ERROR, nothing
 * stored. This order is the contract. Tests, in this order: product id, bank (0-3), tail.
 *
 * @param[in] productId The product id, 0.
 * @param[in] bank      0-2; 3 is sent, then refused.
 * @param[in] tail      0 or 1.
 * @retval NVX_OK    Done, whatever the mixers and the file did.
 * @retval NVX_ERROR A bad argument (nothing sent or stored), or bank 3 (sent, not stored).
 * @par Effects
 * Sends one write to each mixer, stores one key (banks 0-2). Announces nothing.
 * @par Blocking and threads
 * At most 1 s per mixer (one transfer), plus one settings update (3 s). Any thread.
 */
NVX_API int32_t NVX_SetFXBANKBFXTAILIndex(int32_t productId, uint32_t bank, uint32_t tail);

/**
 * @brief Gives a bank's stored beat FX tail.
 *
 * Unlike the other getters of the FX banks, the output is written on every path past the argument
 * tests: 0 first, then the stored value when there is a valid one. The low byte of the stored word
 * counts (the bank bits are ignored). Tests, in this order: product id, output, bank (0-3).
 *
 * @param[in]  productId The product id, 0.
 * @param[in]  bank      0-2; 3 passes the argument test and then gives #NVX_ERROR.
 * @param[out] tail      Receives 0 or 1; 0 on every #NVX_ERROR after the argument tests. Untouched
 *                       when an argument is bad.
 * @retval NVX_OK    *tail is the stored tail, or 0 when the key is absent.
 * @retval NVX_ERROR A bad argument; the settings file is missing or unreadable; bank 3; or a
 *                   stored value above 1.
 * @par Effects
 * Reads the settings file. Sends, stores and announces nothing.
 * @par Blocking and threads
 * Reads the settings file once; takes no lock. Any thread.
 */
NVX_API int32_t NVX_GetFXBANKBFXTAILIndex(int32_t productId, uint32_t bank, uint32_t *tail);

/** @} */

/**
 * @defgroup nvx_play Play settings
 * @brief Crossfader cut lag, 4-beat loop button type, fader start, pad mode, cut lag mode, and the
 *        crossfader mode.
 *
 * Each of the five settings is a small index: the setter sends it in the high byte of its request
 * (`index << 8`) and stores it bare; the getter hands out the low byte of the stored number,
 * without a range test (a stored 0x0102 reads 2, a stored -1 reads 255). What the indices mean on
 * the mixer is the mixer's: the library carries them unchanged and has no texts for them.
 *
 * | setting                 | index | key                 | getter, when the file or key is missing |
 * |-------------------------|-------|---------------------|-----------------------------------------|
 * | crossfader cut lag      | 0-255 | "CRFaderCutLag"     | output untouched                        |
 * | 4-beat loop button type | 0-1   | "4BeatLpBtType"     | output untouched                        |
 * | fader start             | 0-2   | "FaderStartMode"    | 0                                       |
 * | pad mode                | 0-2   | "PADMode"           | 0                                       |
 * | crossfader cut lag mode | 0-3   | "CRFaderCutLagMode" | 0                                       |
 *
 * The split between untouched and 0 is the contract. Setters test the product id, then the index,
 * and answer #NVX_OK whatever the mixers and the file did; getters test the output, then the
 * product id.
 * @{
 */

/**
 * @brief Sets the crossfader cut lag on every connected mixer and stores it.
 * @param[in] productId The product id, 0.
 * @param[in] index     0-255.
 * @retval NVX_OK    Done.
 * @retval NVX_ERROR A bad argument; nothing was sent or stored.
 * @par Effects
 * Sends one write to each mixer, stores one key. Announces nothing.
 * @par Blocking and threads
 * At most 1 s per mixer (one transfer), plus one settings update (3 s). Any thread.
 */
NVX_API int32_t NVX_SetCROSSFADERCUTLAGIndex(int32_t productId, uint32_t index);
/**
 * @brief Gives the stored crossfader cut lag.
 * @param[in]  productId The product id, 0.
 * @param[out] index     Receives the stored low byte; untouched when the file is missing or
 *                       unreadable, the key is absent, or an argument is bad.
 * @retval NVX_OK    *index set, or untouched for a missing file or key.
 * @retval NVX_ERROR @p index is NULL or @p productId is not 0.
 * @par Effects
 * Reads the settings file. Sends, stores and announces nothing.
 * @par Blocking and threads
 * Reads the settings file once; takes no lock. Any thread.
 */
NVX_API int32_t NVX_GetCROSSFADERCUTLAGIndex(int32_t productId, uint32_t *index);
/**
 * @brief Sets the 4-beat loop button type on every connected mixer and stores it.
 * @param[in] productId The product id, 0.
 * @param[in] index     0-1.
 * @retval NVX_OK    Done.
 * @retval NVX_ERROR A bad argument; nothing was sent or stored.
 * @par Effects
 * Sends one write to each mixer, stores one key. Announces nothing.
 * @par Blocking and threads
 * At most 1 s per mixer (one transfer), plus one settings update (3 s). Any thread.
 */
NVX_API int32_t NVX_Set4BEATLOOPBUTTONTypeIndex(int32_t productId, uint32_t index);
/**
 * @brief Gives the stored 4-beat loop button type.
 * @param[in]  productId The product id, 0.
 * @param[out] index     Receives the stored low byte; untouched when the file is missing or
 *                       unreadable, the key is absent, or an argument is bad.
 * @retval NVX_OK    *index set, or untouched for a missing file or key.
 * @retval NVX_ERROR @p index is NULL or @p productId is not 0.
 * @par Effects
 * Reads the settings file. Sends, stores and announces nothing.
 * @par Blocking and threads
 * Reads the settings file once; takes no lock. Any thread.
 */
NVX_API int32_t NVX_Get4BEATLOOPBUTTONTypeIndex(int32_t productId, uint32_t *index);
/**
 * @brief Sets the fader start on every connected mixer and stores it.
 * @param[in] productId The product id, 0.
 * @param[in] index     0-2.
 * @retval NVX_OK    Done.
 * @retval NVX_ERROR A bad argument; nothing was sent or stored.
 * @par Effects
 * Sends one write to each mixer, stores one key. Announces nothing.
 * @par Blocking and threads
 * At most 1 s per mixer (one transfer), plus one settings update (3 s). Any thread.
 */
NVX_API int32_t NVX_SetFADERSTARTIndex(int32_t productId, uint32_t index);
/**
 * @brief Gives the stored fader start (0 when none is stored).
 * @param[in]  productId The product id, 0.
 * @param[out] index     Receives the stored low byte, or 0 when the file is missing or unreadable
 *                       or the key is absent. Untouched on #NVX_ERROR.
 * @retval NVX_OK    *index is set.
 * @retval NVX_ERROR @p index is NULL or @p productId is not 0.
 * @par Effects
 * Reads the settings file. Sends, stores and announces nothing.
 * @par Blocking and threads
 * Reads the settings file once; takes no lock. Any thread.
 */
NVX_API int32_t NVX_GetFADERSTARTIndex(int32_t productId, uint32_t *index);
/**
 * @brief Sets the pad mode on every connected mixer and stores it.
 * @param[in] productId The product id, 0.
 * @param[in] index     0-2.
 * @retval NVX_OK    Done.
 * @retval NVX_ERROR A bad argument; nothing was sent or stored.
 * @par Effects
 * Sends one write to each mixer, stores one key. Announces nothing.
 * @par Blocking and threads
 * At most 1 s per mixer (one transfer), plus one settings update (3 s). Any thread.
 */
NVX_API int32_t NVX_SetPADModeIndex(int32_t productId, uint32_t index);
/**
 * @brief Gives the stored pad mode (0 when none is stored).
 * @param[in]  productId The product id, 0.
 * @param[out] index     Receives the stored low byte, or 0 when the file is missing or unreadable
 *                       or the key is absent. Untouched on #NVX_ERROR.
 * @retval NVX_OK    *index is set.
 * @retval NVX_ERROR @p index is NULL or @p productId is not 0.
 * @par Effects
 * Reads the settings file. Sends, stores and announces nothing.
 * @par Blocking and threads
 * Reads the settings file once; takes no lock. Any thread.
 */
NVX_API int32_t NVX_GetPADModeIndex(int32_t productId, uint32_t *index);
/**
 * @brief Sets the crossfader cut lag mode on every connected mixer and stores it.
 *
 * The request is the one named for the crossfader fade (wIndex 0x8515).
 *
 * @param[in] productId The product id, 0.
 * @param[in] index     0-3.
 * @retval NVX_OK    Done.
 * @retval NVX_ERROR A bad argument; nothing was sent or stored.
 * @par Effects
 * Sends one write to each mixer, stores one key. Announces nothing.
 * @par Blocking and threads
 * At most 1 s per mixer (one transfer), plus one settings update (3 s). Any thread.
 */
NVX_API int32_t NVX_SetCROSSFADERCUTLAGModeIndex(int32_t productId, uint32_t index);
/**
 * @brief Gives the stored crossfader cut lag mode (0 when none is stored).
 * @param[in]  productId The product id, 0.
 * @param[out] index     Receives the stored low byte, or 0 when the file is missing or unreadable
 *                       or the key is absent. Untouched on #NVX_ERROR.
 * @retval NVX_OK    *index is set.
 * @retval NVX_ERROR @p index is NULL or @p productId is not 0.
 * @par Effects
 * Reads the settings file. Sends, stores and announces nothing.
 * @par Blocking and threads
 * Reads the settings file once; takes no lock. Any thread.
 */
NVX_API int32_t NVX_GetCROSSFADERCUTLAGModeIndex(int32_t productId, uint32_t *index);

/**
 * @brief Gives the number of crossfader modes: 3.
 *
 * Tests, in this order: output, product id.
 *
 * @param[in]  productId The product id, 0.
 * @param[out] count     Receives 3 on success; untouched otherwise.
 * @retval NVX_OK    *count is 3.
 * @retval NVX_ERROR @p count is NULL or @p productId is not 0.
 * @par Effects
 * None: a constant.
 * @par Blocking and threads
 * Does not block. Any thread.
 */
NVX_API int32_t NVX_GetNumOfCROSSFADERModeIndex(int32_t productId, uint32_t *count);

/**
 * @brief Gives the name of a crossfader mode: "NONE", "SMALL", "LARGE" (CrossFaderModeText).
 *
 * The table's NULL end entry (index 3) is not reachable. Tests, in this order: product id,
 * output, index.
 *
 * @param[in]  productId The product id, 0.
 * @param[in]  index     0-2.
 * @param[in]  unused    Ignored; any value is accepted, pass 0.
 * @param[out] text      Receives a table text, valid for the life of the process; untouched on
 *                       #NVX_ERROR.
 * @retval NVX_OK    *text is set.
 * @retval NVX_ERROR @p productId is not 0, @p text is NULL, or @p index is above 2.
 * @par Effects
 * None: a table entry.
 * @par Blocking and threads
 * Does not block. Any thread.
 */
NVX_API int32_t NVX_GetCROSSFADERModeText(int32_t productId, uint32_t index, intptr_t unused, const char **text);

/**
 * @brief Gives the current crossfader mode: bits 8-15 of the number stored under
 *        "CRFaderCutLagMode" (0 when none is stored).
 *
 * The mode shares the cut lag mode's key but reads the byte in which the setter sends the index,
 * not the one in which it stores it: since NVX_SetCROSSFADERCUTLAGModeIndex() stores the bare
 * index 0-3, this reads 0 ("NONE") for every value this library stores; only a value of 256 or
 * more written by another program gives another mode (0x0201 gives 2, "LARGE"). This is the
 * contract. Tests, in this order: output, product id.
 *
 * @param[in]  productId The product id, 0.
 * @param[out] index     Receives the mode, or 0 when the file is missing or unreadable or the key
 *                       is absent. Untouched on #NVX_ERROR.
 * @retval NVX_OK    *index is set.
 * @retval NVX_ERROR @p index is NULL or @p productId is not 0.
 * @par Effects
 * Reads the settings file. Sends, stores and announces nothing.
 * @par Blocking and threads
 * Reads the settings file once; takes no lock. Any thread.
 */
NVX_API int32_t NVX_GetCurrentCROSSFADERModeIndex(int32_t productId, uint32_t *index);

/** @} */

/**
 * @defgroup nvx_tables Text tables for menus
 * @brief Constant, library-owned texts for a client's menus. Read them, never write or free them.
 *
 * The sizes are part of the interface. Tables that have a NULL end entry keep it: some text
 * functions hand it out for the index one past the last name.
 * @{
 */

/** All display texts of the routing menus, indexed through MXRK7_TEXT; 48 texts, no NULL entry. */
NVX_API extern const char *const InputAudioText[48];
/** The routing menu of each USB audio channel: row = channel 0-4, column = menu index 0-7, entry =
 *  an index of InputAudioText. Columns 8 and 9 hold 47 ("None") and are never reached. */
NVX_API extern const int32_t MXRK7_TEXT[5][10];
/** Boost levels by index: "-5 dB", "-10 dB", "-15 dB", "-19 dB". */
NVX_API extern const char *const BoostLevelText[4];
/** MIDI channels "CH 1" to "CH 16"; no function hands them out (the MIDI settings are reserved). */
NVX_API extern const char *const MidiChannelText[16];
/** MIDI key modes "Toggle" and "Trigger"; no function hands them out. */
NVX_API extern const char *const MidiKeyModeText[2];
/** FX bank names by bank number: "BANKA", "BANKB", "Temporary", then NULL. */
NVX_API extern const char *const FXBANKKeyText[4];
/** Filter modes: "DUB ECHO", "FILTER", "NOISE", "PITCH", "WIDE FILTER", then NULL. */
NVX_API extern const char *const FXBANKFilterModeText[6];
/** Beat FX positions 0-5: "BTFX_1" to "BTFX_6"; no NULL entry. */
NVX_API extern const char *const FXBANKBFXPositionText[6];
/** Beat FX items 0-2: "FXType", "Deprh" (the interface's own spelling), "BEAT", then NULL. */
NVX_API extern const char *const FXBANKBFXtypeText[4];
/** Beat effects 0-14, from "BACK SPIN" to "FADER SYNTH3", then NULL. */
NVX_API extern const char *const BFXTypeText[16];
/** "PopUp", "Slider_L", "Slider_H", then NULL. The first is the settings key of the current filter
 *  mode and beat effect; the others are for clients. */
NVX_API extern const char *const FXBANKBFXItemText[4];
/** Channel fader modes 0-3: "VOLUME", "FADER FILTER", "FADER PITCH SHIFTER", "FADER ROLL"; no NULL
 *  entry. */
NVX_API extern const char *const FXBANKChFaderModeText[4];
/** Client-side names of the two stored channel fader settings: "CHFaderMode_A", "CHFaderMode_B". */
NVX_API extern const char *const CHFADERModeText[2];
/** Client-side names of the tail settings of banks A, B and temporary: "BFXTail_A", "BFXTail_B",
 *  "BFXTail_T", then NULL. */
NVX_API extern const char *const BFXTailText[4];
/** Crossfader modes 0-2: "NONE", "SMALL", "LARGE", then NULL. */
NVX_API extern const char *const CrossFaderModeText[4];

/** @} */

/**
 * @defgroup nvx_slots Callback slots and payloads
 * @brief The library's own state behind the callbacks, exported as part of the interface.
 *
 * Each table has one slot, index = product id. The Register and Unregister functions fill and
 * empty the slots; read them if you need to, but do not write them: a callback written there
 * directly is called only once a Register of its family has subscribed. The MIDI slots and
 * payloads stay NULL for the life of the process.
 * @{
 */

/** The registered routing callback, or NULL. */
NVX_API extern NVXInputAudioChangedProc InputAudioChangedCallbackFunc[1];
/** The context handed to the routing callback; Unregister leaves it as it was. */
NVX_API extern void *InputAudioChangedContext[1];
/** The registered boost level callback, or NULL. */
NVX_API extern NVXIndexChangedProc BoostLevelChangedCallbackFunc[1];
/** The context handed to the boost level callback; Unregister leaves it as it was. */
NVX_API extern void *BoostLevelChangedContext[1];
/** Reserved: always NULL. */
NVX_API extern NVXIndexChangedProc MidiChannelChangedCallbackFunc[1];
/** Reserved: always NULL. */
NVX_API extern void *MidiChannelChangedContext[1];
/** Reserved: always NULL. */
NVX_API extern NVXIndexChangedProc MidiKeyModeChangedCallbackFunc[1];
/** Reserved: always NULL. */
NVX_API extern void *MidiKeyModeChangedContext[1];

/** Opaque, library-owned reference to the last routing change this process announced: NULL before
 *  the first, and again after each NVX_RegisterInputAudioChangedCallback(). Its layout is not part
 *  of the interface; compare it with NULL only. */
NVX_API extern void *inputAudioInfo;
/** As inputAudioInfo, for boost level changes (reset by NVX_RegisterBoostLevelChangedCallback()). */
NVX_API extern void *boostLevelInfo;
/** Reserved: always NULL. */
NVX_API extern void *midiChannelInfo;
/** Reserved: always NULL. */
NVX_API extern void *midiKeyModeInfo;

/** @} */

/**
 * @defgroup nvx_device_globals Device globals
 * @brief Part of the interface, never read or written by the library: they stay zero.
 * @{
 */

/** Always 0. */
NVX_API extern int32_t numOfDevices;
/** Always 0. */
NVX_API extern int32_t newNumOfDevices;
/** Always NULL, every entry. */
NVX_API extern void *usbDeviceRef[128];

/** @} */

/**
 * @example mixer_status.c
 * Whether a mixer is connected, and its firmware, input selectors and Serato state.
 */
/**
 * @example set_routing.c
 * The routing menu of a USB audio channel, changing the routing, and the warning in the user's
 * language.
 */
/**
 * @example watch_routing.c
 * Routing and boost level callbacks run from a GLib main loop until Ctrl-C.
 */

#ifdef __cplusplus
}
#endif

#endif /* NORVANE_MXRK7_SETUP_H */
