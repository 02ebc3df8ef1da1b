#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "batch/functions.h"
#include "batch/picture_task.h"
#include "batch/platform.h"
#include "batch/run_report.h"
#include "batch/startup_record.h"
#include "imagefiles/image_files.h"
#include "pixels/bit_filter.h"
#include "pixels/bit_region.h"

namespace tessarine {

struct FunctionRecord;

/// One function row of Ltray. All columns are texts; column(1) to column(9) are three numbers,
/// two colours, the option, the style word and the picked point's x and y.
struct TrayRow {
    std::string text;  ///< the function's catalogue name
    int32_t Tag = 0;   ///< its id
    std::array<std::string, 9> columns;

    std::string& column(int k) { return columns.at(static_cast<size_t>(k - 1)); }
    const std::string& column(int k) const { return columns.at(static_cast<size_t>(k - 1)); }
};

/// One entry of LSelectedFunctions, the chain as people see it.
struct ChainEntry {
    std::string text;
    int32_t itemData = 0;  ///< 1-based index of its row in Ltray
};

/// One file of the Image Basket.
struct BasketItem {
    std::string text;
    std::string smallIcon;  ///< the extension in lower case
    std::string Tag;        ///< the full path
    std::string column1;    ///< the folder
};

/// One picture file of the current folder.
struct FolderRow {
    std::string text;       ///< the file's name
    std::string column1;    ///< its size as text
    std::string column2;    ///< the system's name of its type
    std::string smallIcon;  ///< the extension in lower case
    std::string Tag;        ///< the full path
    bool checked = true;
    uint64_t bytes = 0;  ///< its size, for sorting
};

/// The files of a folder, of whatever type.
struct FileList {
    std::string path;  ///< without a separator at its end, but for the root
    std::vector<std::string> names;
};

/// The picture in the preview panel.
struct PreviewPicture {
    bool visible = false;
    int32_t left = 0;  ///< its place in the panel, in pixels of the window
    int32_t top = 0;
    int32_t width = 0;
    int32_t height = 0;
    Bitmap picture;  ///< at most previewDensity times that size
};

/// A slider with its label, value field and spin.
struct SheetSlider {
    bool visible = false;  ///< frFilter(i)
    std::string label;     ///< lblFInfo(i)
    std::string Tag;       ///< the step as text
    int32_t min = 0;
    int32_t max = 0;
    int32_t value = 0;
    std::string valueText;  ///< lblFilterV(i)
    int32_t spinMin = 0;    ///< sbFilterV(i), turned over so that up means more
    int32_t spinMax = 0;
    int32_t spinValue = 0;
    float step = 1.0F;
    std::string format;
    int32_t centreOffset = 0;
};

/// A panel of the status bar.
struct StatusPanel {
    std::string text;
    std::string icon;  ///< the extension, in lower case, of the file type whose icon it shows
};

/// A progress bar.
struct ProgressBar {
    bool visible = false;
    int32_t max = 100;
    int32_t value = 0;
};

/// The cross at the picked point, in pixels of the preview pictures.
struct PickMark {
    int32_t x = 0;
    int32_t y = 0;
    uint32_t colour = 0;  ///< 0x00BBGGRR
};

/// A list of texts of which one may be chosen; index -1 for none.
struct ChoiceList {
    std::vector<std::string> items;
    int32_t index = -1;

    /// The chosen item's text, empty where none is.
    std::string text() const;
};

/// The whole program without a screen: the working state, the baskets, the picture holders, one
/// plain member for each control whose value the logic reads, and the operations on them.
///
/// Except where told, operations run in skipping mode: a statement that fails is left out and
/// nothing is thrown.
class cBatch {
  public:
    /// \param files  who reads and writes picture files for it
    explicit cBatch(Platform& platform, PictureFiles& files = localFiles());
    cBatch(const cBatch&) = delete;
    cBatch& operator=(const cBatch&) = delete;

    // ---- The working state: one set, shared by sheet, preview and rows ----

    int32_t functionId = 5;
    std::array<int32_t, 3> funcParam{};
    std::array<int32_t, 2> funcColor{};  ///< 0x00BBGGRR
    bool funcOption = false;
    std::string funcStyle;
    float pickRelX = 0;  ///< the picked point as a fraction of the picture
    float pickRelY = 0;
    float pickX = 0;  ///< the picked point in preview pixels
    float pickY = 0;
    bool sheetReady = false;
    PixelBuffer workBits;      ///< the latest result
    PixelBuffer originalBits;  ///< the start of every rebuild
    int32_t workWidth = 0;     ///< of the picture last taken in
    int32_t workHeight = 0;
    BitmapInfo workBitmapInfo;  ///< how workBits is described to the painting call
    Rect workRect;
    cBitRegion workRegion;
    cBitFilter cFilter;
    mFormat format;
    StartupRecord startupRecord;

    // ---- Baskets ----

    std::vector<BasketItem> lvSelected;
    std::vector<TrayRow> Ltray;
    std::vector<ChainEntry> LSelectedFunctions;
    int32_t selectedFunction =
        -1;  ///< the selected entry of LSelectedFunctions, from 0; -1 for none

    // ---- Picture holders ----

    PictureHolder iSrc;  ///< the run's picture between the steps
    PictureHolder iOri;  ///< the built-in sample
    PictureHolder iDst;  ///< the preview's result

    // ---- Controls of the first step ----

    FileList Fil;                     ///< the current folder
    std::vector<FolderRow> lvFolder;  ///< its pictures
    int32_t lvFolderColumn = -1;      ///< the column it is sorted by; -1 for the folder's order
    bool lvFolderDescending = false;
    PictureHolder tPreview;  ///< the file last clicked, at its own size
    PreviewPicture PPreview;
    int32_t PreviewWidth = 0;  ///< of the panel around PPreview, in pixels of the window
    int32_t PreviewHeight = 0;
    double previewDensity = 1;  ///< pixels of the screen for one of the window
    std::string LFileName;
    std::string LType;
    std::string LResolution;
    std::string LLocation;

    // ---- Controls of the sheet ----

    std::string CLab = "Functions Preview";
    std::array<SheetSlider, 3> sbFilter;
    int16_t highestSlider = 0;
    bool frFactors = false;  ///< panels: visible or not
    bool frOption = false;
    bool frColor = false;
    bool frBanks = false;
    bool FrmGlass = false;
    bool FrmCurtain = false;
    bool FrResize = false;
    bool FrRotate = false;
    std::string lblOption;
    int16_t chkOption = 0;  ///< tick boxes hold 0 or 1
    std::array<uint32_t, 2> Col{0x000000FF, 0x000000C0};
    std::array<bool, 2> ColVisible{};
    bool pickEnabled = false;
    bool tmrSelect = false;  ///< the timer runs
    PickMark pickMark;       ///< as it was last drawn
    std::array<bool, 3> optRChannel{false, false, true};
    std::array<bool, 3> optGChannel{false, true, false};
    std::array<bool, 3> optBChannel{true, false, false};
    std::array<int16_t, 3> chkInvt{};
    std::array<int16_t, 3> chkKill{};
    std::array<bool, 4> oo{true, false, false, false};
    ChoiceList cbo;
    std::array<bool, 4> Curt{true, false, false, false};
    std::string txtW = "100";
    std::string txtH = "100";
    bool txtHVisible = false;  ///< hidden while keep proportions is ticked
    bool txtHHVisible = true;  ///< "will be adjusted at runtime", shown in its place
    int16_t chkKeepProportions = 1;
    int16_t chkInterpolate = 1;
    int16_t sbDegrees = 0;
    std::string txtDegrees = "0";
    int16_t chkAntialiasing = 0;

    // ---- Controls of the last two steps ----

    std::string txtDestination;
    std::string selectedFolder;  ///< what the folder dialog left: a folder, or empty
    std::string txtName;
    ChoiceList cboFormat;  ///< filled with the rows of the format table
    int16_t chkOverwrite = 0;
    int16_t chkShowDestination = 0;
    int16_t chkCareful = 0;  ///< the run is BatchCarefully(); not among the settings
    ProgressBar pb;
    std::string RTF;
    bool stopRequested = false;

    /// The status bar's panels; "SB(1)" is the first of them.
    std::array<StatusPanel, 5> SB{{{"Ombrel Tessarine", {}}, {}, {}, {}, {}}};

    // ---- The window, as settings know it ----

    enum class WindowState { normal, minimized, maximized };
    WindowState windowState = WindowState::normal;
    int32_t windowWidth = 640;  ///< pixels
    int32_t windowHeight = 480;
    int32_t bs11 = 0;  ///< positions of the splitters
    int32_t bs12 = 0;
    int32_t bs13 = 0;
    int32_t bs14 = 0;
    int32_t bs21 = 0;
    std::string FT;  ///< path of the folder tree

    // ---- Chain and dispatch ----

    /// Computes a function from the sheet and shows it; -1 shows workBits without computing.
    void PreviewFunction(int32_t id);
    /// Loads row `rowIndex` (from 1) into the working state and applies `id` to cFilter.
    void ApplyRow(int16_t id, int16_t rowIndex, bool forRun);
    /// Gives the image the size of funcParam, with funcOption its own proportions at that width;
    /// smoothed where funcParam[2] is 1. iSrc, whose size the proportions go by, follows.
    void ApplyResize();
    /// Turns the image by the sheet's angle within its size, so that corners are cut.
    void PreviewRotate();
    /// Turns workBits by the sheet's angle at this moment, smoothly with funcOption. Image and iSrc
    /// grow, so that nothing is lost.
    void ApplyRotate();
    /// Restarts from originalBits, applies the chain and shows the result.
    void RebuildChain();
    void RebuildChainAndDraw();
    /// Adds the function of the selected node; nothing without one, or where it is a group's.
    void CmdAdd();
    /// A button of the tray's toolbar, from 1, of which 6 is a separator.
    void TBTray(int16_t button);
    /// Appends the previewed function to chain and pool; `name` is the tree node's text.
    void AddFunction(const std::string& name);
    /// Takes entry `index` (from 0) out of the chain; its row stays in the pool.
    void RemoveFunction(int32_t index);
    /// Moves entry `index` (from 0) one place up or down, where there is one, and selects it.
    void MoveFunctionUp(int32_t index);
    void MoveFunctionDown(int32_t index);
    /// Empties chain and pool and shows the sample; nothing where the chain is empty.
    void ClearFunctions();

    // ---- Pictures ----

    /// Takes a picture in: workBits, originalBits, sizes and region are made anew from it.
    void SetPicture(PictureHolder& picture);
    /// A black picture; nothing happens for a side below 1.
    void CreateBlank(int32_t dX, int32_t dY);

    // ---- Sheet ----

    /// Chooses the function of a tree index (from 1); a group is ignored.
    void SelectNode(int16_t treeIndex);
    void ShowSheet(int32_t id);
    void SetSlider(int16_t index, const std::string& Label, float Min, float Max, float Step,
                   float Default, const std::string& Format, bool Centered);
    void SetOption(const std::string& Label, bool Default);
    void EnablePick();
    void ShowSwatches(int16_t hidden);

    // What the sheet's controls do when a person changes them. Each previews, where told.

    /// The slider was moved to a value.
    void MoveSlider(int16_t index, int32_t value);
    /// The spin beside the slider was set to a value.
    void SpinSlider(int16_t index, int32_t value);
    /// The text of a value field was changed.
    void TypeSliderValue(int16_t index, const std::string& text);
    void ChangeOption(int16_t ticked);
    void ChangeSwatch(int16_t index, uint32_t colour);
    /// A point of the preview was picked, in pixels of the picture taken in; the first swatch
    /// takes its colour. While no point is asked for, iOri is repainted and that is all.
    void PickPoint(float X, float Y);
    /// Draws the cross at the picked point on both preview pictures, until their next repaint.
    void DrawPickMark();
    /// A tick of tmrSelect: the cross changes between red and black.
    void TickSelect();
    /// Ticks box `index` of a column of frBanks: 0 red, 1 green, 2 blue.
    void ChooseBank(int16_t column, int16_t index);
    void ChangeInvert(int16_t index, int16_t ticked);
    void ChangeKill(int16_t index, int16_t ticked);
    void ChooseGlass(int16_t index);
    void ChooseGlassStrength(int32_t index);
    void ChooseCurtain(int16_t index);
    void ChangeWidth(const std::string& text);
    void ChangeHeight(const std::string& text);
    void ChangeKeepProportions(int16_t ticked);
    void ChangeInterpolate(int16_t ticked);
    void ChangeDegrees(int32_t degrees);
    void TypeDegrees(const std::string& text);
    /// The buttons cmd45(0), cmd45(1), cmd90(0), cmd90(1): step is 45, -45, 90 or -90.
    void StepDegrees(int32_t step);
    void ChangeAntialiasing(int16_t ticked);

    // ---- Image selection ----

    /// What the folder tree's change to a folder does: its pictures are listed.
    void ChangeFolder(const std::string& path);
    /// Fills lvFolder from Fil, every row checked.
    void ListFiles();
    /// Sorts lvFolder by a column, 0 to 2, now and whenever it is filled: names without regard to
    /// case and with numbers by their value, sizes by bytes.
    void SortFolder(int32_t column, bool descending);
    /// Ticks rows (from 0) of lvFolder, or clears their ticks.
    void CheckRows(const std::vector<int32_t>& rows, bool checked);
    void CheckAll(bool checked);
    /// A row was clicked, with these rows selected; exactly one is shown in the preview.
    void ClickFolder(const std::vector<int32_t>& selected);
    void ClickBasket(const std::vector<int32_t>& selected);
    /// Adds rows of lvFolder (from 0, in their order) to the basket. Those that are in it already
    /// are counted in a message.
    void AddSelectedToBasket(const std::vector<int32_t>& rows);
    void AddCheckedToBasket();
    /// The same for rows dragged to the basket.
    void DropRowsOnBasket(const std::vector<int32_t>& rows);
    /// What a file manager drops on the basket: accepted files, folders with theirs, and list
    /// files, which are opened.
    void DropOnBasket(const std::vector<std::string>& paths);
    /// What a file manager drops on lvFolder: the tree goes to the first path's folder.
    void DropOnFolder(const std::vector<std::string>& paths);
    /// Takes rows (from 0) out of the basket.
    void RemoveSelected(const std::vector<int32_t>& rows);
    void RemoveAll();
    /// Shows a file in the preview panel and tells its figures. A file that cannot be read leaves
    /// the figures of the one before.
    void ShowImageDetails(const std::string& path);
    /// Fits the picture into a preview panel of this size, in pixels of the window. Without a
    /// picture, or without room, PPreview is hidden.
    void FitPreview(int32_t previewWidth, int32_t previewHeight);

    // ---- List files ----

    /// The basket's list buttons: a list that the person chooses is read or written.
    void LoadPictureList();
    void SavePictureList();
    /// Reads a picture list into the basket.
    void OpenPictureList(const std::string& path);
    void SaveFunctionList();
    void LoadFunctionList();
    /// Reads a function list into chain and pool.
    void OpenFunctionList(const std::string& path);
    /// Takes a record of a function list into the working state and appends it to chain and pool.
    void AppendRecord(const FunctionRecord& record);
    void SaveList();

    // ---- Settings and start-up ----

    void LoadStartup();
    void SaveStartup();
    /// What the splash window's first tick does.
    void Startup();
    /// The window's loading, as far as it is logic.
    void LoadWindow();
    /// The window's closing: the settings are gathered and written.
    void CloseWindow();

    // ---- The destination ----

    /// What follows the folder dialog: txtDestination becomes selectedFolder, if that exists.
    void TakeSelectedFolder();

    // ---- The run ----

    /// Starts the run that chkCareful tells; nothing where mayBeginRun() says no.
    void CmdBatchAll();
    void CmdStop() { stopRequested = true; }
    /// Whether a run is under way, one inside another included.
    bool runs() const { return runsUnderWay_ > 0; }
    /// Whether a careful run is under way.
    bool runsCarefully() const { return runsCarefully_; }
    /// A careful run stands alone: no run begins inside it, and it begins inside no other.
    bool mayBeginRun() const { return !runsCarefully_ && (chkCareful == 0 || !runs()); }
    /// The run over the whole basket, failures passed over in silence.
    void BatchAll();
    /// The window's run with each picture by itself, as BatchEach() does it: with the messages,
    /// overview and progress of BatchAll(), and with the failures at the overview's end. Refuses to
    /// replace a picture of the basket. What is changed in the window meanwhile does not count.
    void BatchCarefully();
    /// The pictures that the last run left out for a failure, if it was a careful one; in the
    /// basket's order.
    std::vector<std::string> failedPictures;
    /// Writes them into a picture list that the person chooses; tells what comes in the way.
    void KeepFailures();
    /// The run with each picture by itself: it starts from its file and nothing else, one that
    /// cannot be read gives no output, and an output stands under its name only when it is
    /// complete. Reads the same members as BatchAll, changes none but `report` and stopRequested,
    /// and shows nothing; txtDestination must be a folder and a format row be chosen.
    ///
    /// Pictures are processed `jobs` at a time, on threads of their own; outputs and report do not
    /// hang on that. Platform, report and Progress hear of it on the calling thread alone. With one
    /// job all is done on it.
    void BatchEach();
    /// The same for pictures, numbers and outputs that are named one by one, in place of the basket
    /// and the destination; the folders of the outputs must be there.
    void BatchEach(const RunOrder& order);
    /// What BatchEach does by itself.
    RunOrder orderOfBasket() const;
    int32_t jobs = 1;  ///< pictures that BatchEach has in flight; the files are then read and
                       ///< written from several threads
    /// What became of each picture of the last run, a run inside it included.
    RunReport report;
    /// The extension of the chosen format row; empty for a row outside the table.
    std::string formatExtension() const;
    /// The name under which picture `number` is saved in a folder that ends in a separator.
    std::string outputName(const std::string& destination, int32_t number,
                           const std::string& extension) const;

    Platform& platform() { return platform_; }

  private:
    /// Writes a panel of the status bar, counted from 1.
    void showStatus(int32_t panel, const std::string& text, const std::string& icon = {});
    void arrangeFolder();
    void addDropped(const std::vector<std::string>& files);
    void tellAdded(int32_t duplicates);
    void showBasketCount();
    void hidePreview();

    /// Reads columns 1 to 7 of a row into the working state; what does not convert stays.
    void loadColumns(const TrayRow& row);
    /// Works out the picked point from columns 8 and 9.
    void loadPoint(const TrayRow& row, bool forRun);
    void applyFunction(int32_t id, CallSite site);
    /// The region becomes the whole of a picture of this size, and filters keep to it.
    void coverWithRegion(int32_t width, int32_t height);
    /// Appends a row with the whole working state, and the chain entry that refers to it.
    void appendRow(const std::string& name);
    /// Changes an entry of the chain for the one above it.
    void swapWithUpper(int32_t index);
    /// originalBits, then every chain entry.
    void applyChain();
    /// The sample without any function.
    void restart();
    void paintPreview();
    void previewCurrent() { PreviewFunction(functionId); }
    /// Makes the picture of a holder the image that rows work on.
    void takeIn(PictureHolder& picture);

    /// Whether rows are told in the overview.
    enum class Overview { written, silent };

    /// The checks before a run, with their messages.
    /// \return the destination with a separator at its end; nothing where a check fails
    std::optional<std::string> checkBeforeRun();
    /// Appends to the overview.
    void append(const std::string& text);
    void openOverview(const std::string& destination);
    /// Reads a file into iSrc, which keeps what it held where that fails.
    /// \return whether a picture was read; its figures, or why not, stand in `entry`
    bool loadIntoSource(const std::string& path, PictureReport& entry);
    /// The pictures behind number `i` may be read ahead, but for what may be an output.
    void expectAfter(int32_t i, const std::string& destination);
    void applyRows(Overview overview);
    void paintResultIntoSource();
    void restorePreview();
    struct RowState;
    RowState rowState() const;
    void restoreRowState(const RowState& state);
    struct Alone;
    struct Recipe;
    Recipe recipe() const;
    class EachRun;
    class CarefulRun;
    /// A program for one picture alone: what rows read is as the recipe tells it.
    static std::unique_ptr<cBatch> workshopFor(const Recipe& recipe, int32_t number,
                                               Platform& platform, PictureFiles& files);
    /// Processes a picture with the whole state of this program.
    PictureReport processAlone(const Alone& picture);

    void hideSheet();
    void showPanel(Panel panel);
    /// Fills the list of strengths for a choice of FrmGlass and selects the first.
    void fillGlassStrengths(int16_t choice);
    /// A value outside the slider's range is refused. \return whether the slider moved.
    bool setSliderValue(int16_t index, int32_t value);

    Platform& platform_;
    PictureFiles& files_;
    int runsUnderWay_ = 0;
    bool runsCarefully_ = false;
    int16_t selectedNode_ = 0;   ///< tree index of the node last selected; 0 for none
    bool choosingBank_ = false;  ///< a column of frBanks is being cleared
    uint32_t markColour_ = 0;    ///< of the picked point's cross
};

/// A folder's path with a separator at its end.
std::string asFolder(std::string path);

/// Milliseconds that have passed since a moment.
int64_t millisecondsSince(std::chrono::steady_clock::time_point start);

/// Reads a picture list that the person chooses through `dialog` into `list`.
void LoadList(Platform& dialog, std::vector<BasketItem>& list);
/// Reads the picture list of a path into `list`; messages go to `dialog`.
void OpenPictureList(Platform& dialog, const std::string& path, std::vector<BasketItem>& list);

/// The built-in preview picture, 200 by 174.
Bitmap samplePicture();

}  // namespace tessarine
