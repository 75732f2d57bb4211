#include "reference_renderer/editor/editor_layout.h"

#include <algorithm>

namespace ReferenceRenderer
{

namespace
{

// All lengths are for 96 dots per inch.
constexpr Geometry::Extent kSmallest{844, 560};
constexpr Geometry::Extent kOpening{1200, 720};

constexpr int kMargin = 16;
constexpr int kGap = 8;
constexpr int kFooter = 56;
constexpr int kButtonHeight = 28;
constexpr int kButtonWidth = 92;
constexpr int kCompareWidth = 68;
constexpr int kStoreWidth = 60;
constexpr int kSwapWidth = 72;

constexpr int kScopeButtonWidth = 72;
constexpr int kFactsWidth = 160;  // beside the buttons, or they have a row of their own
constexpr int kScopePercent = 42; // of the picture's height without a scope
constexpr int kLowestScope = 170;
constexpr int kHighestScope = 380;

constexpr int kPanelPercent = 32; // of the window's width
constexpr int kNarrowestPanel = 364;
constexpr int kWidestPanel = 500;

constexpr int kViewHeight = 26;
constexpr int kHeadingHeight = 18;
constexpr int kPadSize = 66;
constexpr int kRowHeight = 24;
constexpr int kStepGap = 10;       // below the last row of a step, at least
constexpr int kWidestStepGap = 24; // in a window with room to spare
constexpr int kTextHeight = 18;
constexpr int kLetterWidth = 16;
constexpr int kNumberWidth = 66;
constexpr int kNumberHeight = 22;
constexpr int kNumberInset = 3;  // of the edit control inside its frame, top and bottom
constexpr int kNumberIndent = 3; // a sign, a point and six digits fit in between
constexpr int kResetSize = 22;
constexpr int kHintLines = 3;
constexpr int kStatusLines = 3;

// Places the parts of one window. Positions run in pixels.
class Placing
{
public:
    Placing(Geometry::Extent client, int dpi, View view) noexcept : m_dpi(dpi), m_view(view)
    {
        const Geometry::Extent smallest = SmallestClient(dpi);
        m_width = std::max(client.width, smallest.width);
        m_height = std::max(client.height, smallest.height);
    }

    EditorLayout Layout(bool hasScope) noexcept
    {
        PlaceFooter();
        PlacePanel();
        PlacePicture(hasScope);
        return m_layout;
    }

private:
    int Px(int length) const noexcept { return Scaled(length, m_dpi); }

    void PlaceFooter() noexcept
    {
        m_layout.footerTop = m_height - Px(kFooter);
        const int top = m_layout.footerTop + (Px(kFooter) - Px(kButtonHeight)) / 2;
        int right = m_width - Px(kMargin);
        for (Geometry::Rect* button : {&m_layout.cancel, &m_layout.accept, &m_layout.resetAll})
        {
            *button = {right - Px(kButtonWidth), top, Px(kButtonWidth), Px(kButtonHeight)};
            right = button->left - Px(kGap);
        }
        const int textHeight = kStatusLines * Px(kTextHeight);
        const int textTop = m_layout.footerTop + (Px(kFooter) - textHeight) / 2;
        m_layout.status = {Px(kMargin), textTop, right - Px(kGap) - Px(kMargin), textHeight};
    }

    void PlacePanel() noexcept
    {
        const int width =
            std::clamp(m_width * kPanelPercent / 100, Px(kNarrowestPanel), Px(kWidestPanel));
        m_layout.panel = {m_width - width, 0, width, m_layout.footerTop};
        m_left = m_layout.panel.left + Px(kMargin);
        m_right = m_layout.panel.Right() - Px(kMargin);
        constexpr int kMostGaps = 5; // of any view
        const int spare = m_height - SmallestClient(m_dpi).height;
        m_stepGap = std::min(Px(kStepGap) + spare / kMostGaps, Px(kWidestStepGap));
        int top = Px(kMargin) - Px(kGap) / 2;
        PlaceInARow(m_layout.views, top, Px(kViewHeight), 0);
        top += Px(kViewHeight) + m_stepGap;
        for (std::size_t step = 0; step < kStepCount; ++step)
        {
            if (IsIn(static_cast<Step>(step), m_view))
            {
                top = PlaceStep(static_cast<Step>(step), top) + m_stepGap;
            }
        }
        std::array<Geometry::Rect, 4> buttons;
        PlaceInARow(buttons, top - m_stepGap + Px(kGap), Px(kButtonHeight), Px(kGap));
        m_layout.importFile = buttons[0];
        m_layout.recentLooks = buttons[1];
        m_layout.exportFile = buttons[2];
        m_layout.removeTables = buttons[3];
        PlaceHints();
    }

    // In equal widths, from the panel's left to its right.
    template <std::size_t Count>
    void PlaceInARow(std::array<Geometry::Rect, Count>& boxes, int top, int height,
                     int gap) const noexcept
    {
        const int whole = m_right - m_left + gap;
        for (int i = 0; i < static_cast<int>(Count); ++i)
        {
            const int left = m_left + whole * i / static_cast<int>(Count);
            const int next = m_left + whole * (i + 1) / static_cast<int>(Count);
            boxes[static_cast<std::size_t>(i)] = {left, top, next - gap - left, height};
        }
    }

    // Returns where it ends. A step with a pad has its heading above, any other one beside it.
    int PlaceStep(Step step, int top) noexcept
    {
        const int padColumn = m_left + Px(kPadSize) + Px(kGap);
        const auto index = static_cast<std::size_t>(step);
        if (step == Step::Strength)
        {
            m_layout.tables = {m_left, top, m_right - m_left, Px(kTextHeight)};
            top += Px(kTextHeight);
        }
        if (IsBesidePad(step))
        {
            m_layout.headings[index] = {padColumn, top, m_right - padColumn, Px(kHeadingHeight)};
            top += Px(kHeadingHeight);
        }
        else
        {
            m_layout.headings[index] = {m_left, top, padColumn + Px(kLetterWidth) - m_left,
                                        Px(kRowHeight)};
        }
        const int begin = top;
        for (std::size_t i = 0; i < kControlCount; ++i)
        {
            if (kControls[i].step == step)
            {
                PlaceControl(i, padColumn, top);
                top += Px(kRowHeight);
            }
        }
        PlacePad(step, begin, top);
        return top;
    }

    // The pad of a step's channels stands beside their rows; the one of temperature and tint beside
    // both of these, from the heading of the first.
    void PlacePad(Step step, int begin, int end) noexcept
    {
        const auto* const pad =
            std::find_if(kPads.begin(), kPads.end(),
                         [&](const PadFacts& facts) { return FactsOf(facts.first).step == step; });
        if (pad == kPads.end())
        {
            return;
        }
        if (step == Step::Temperature)
        {
            begin -= Px(kHeadingHeight);
            end += m_stepGap + Px(kHeadingHeight) + Px(kRowHeight);
        }
        m_layout.pads[static_cast<std::size_t>(pad - kPads.begin())] = {
            m_left, begin + (end - begin - Px(kPadSize)) / 2, Px(kPadSize), Px(kPadSize)};
    }

    static bool IsBesidePad(Step step) noexcept { return step <= Step::Tint || HasChannels(step); }

    void PlaceControl(std::size_t index, int padColumn, int top) noexcept
    {
        const int height = Px(kRowHeight);
        const auto centred = [&](int length) { return top + (height - length) / 2; };
        ControlBoxes& boxes = m_layout.controls[index];
        const int left = padColumn + Px(kLetterWidth); // all sliders stand in one line
        if (HasChannels(kControls[index].step))
        {
            boxes.letter = {padColumn, centred(Px(kTextHeight)), Px(kLetterWidth), Px(kTextHeight)};
        }
        boxes.reset = {m_right - Px(kResetSize), centred(Px(kResetSize)), Px(kResetSize),
                       Px(kResetSize)};
        boxes.frame = {boxes.reset.left - Px(kGap) / 2 - Px(kNumberWidth),
                       centred(Px(kNumberHeight)), Px(kNumberWidth), Px(kNumberHeight)};
        boxes.number = {boxes.frame.left + Px(kNumberIndent), boxes.frame.top + Px(kNumberInset),
                        boxes.frame.width - 2 * Px(kNumberIndent),
                        boxes.frame.height - 2 * Px(kNumberInset)};
        boxes.slider = {left, top, boxes.frame.left - Px(kGap) - left, height};
    }

    void PlaceHints() noexcept
    {
        const int hintHeight = kHintLines * Px(kTextHeight);
        const int hintTop = m_layout.footerTop - Px(kMargin) - hintHeight;
        if (hintTop >= m_layout.removeTables.Bottom() + Px(kMargin))
        {
            m_layout.hints = {m_left, hintTop, m_right - m_left, hintHeight};
        }
    }

    void PlacePicture(bool hasScope) noexcept
    {
        const int left = Px(kMargin);
        const int right = m_layout.panel.left - Px(kMargin);
        const int scopes = static_cast<int>(kScopeKinds) * Px(kScopeButtonWidth);
        const int compares = static_cast<int>(kCompareButtons) * Px(kCompareWidth) + Px(kGap) +
                             Px(kStoreWidth) + Px(kSwapWidth) + Px(kGap);
        const bool isOneRow = right - left >= compares + scopes + Px(kGap) + Px(kFactsWidth);
        const int lowest = m_layout.footerTop - Px(kMargin) - Px(kButtonHeight);
        const int top = isOneRow ? lowest : lowest - Px(kGap) - Px(kButtonHeight);
        int next = left;
        for (Geometry::Rect& button : m_layout.compare)
        {
            button = {next, top, Px(kCompareWidth), Px(kButtonHeight)};
            next = button.Right();
        }
        next += Px(kGap);
        m_layout.storeState = {next, top, Px(kStoreWidth), Px(kButtonHeight)};
        m_layout.swapState = {m_layout.storeState.Right(), top, Px(kSwapWidth), Px(kButtonHeight)};
        next = isOneRow ? m_layout.swapState.Right() + Px(kGap) : left;
        for (Geometry::Rect& button : m_layout.scopeButtons)
        {
            button = {next, lowest, Px(kScopeButtonWidth), Px(kButtonHeight)};
            next = button.Right();
        }
        next += Px(kGap);
        m_layout.pictureFacts = {next, lowest + (Px(kButtonHeight) - Px(kTextHeight)) / 2,
                                 right - next, Px(kTextHeight)};
        m_layout.pixel = {left, top - Px(kGap) / 2 - Px(kTextHeight), right - left,
                          Px(kTextHeight)};
        const int height = m_layout.pixel.top - Px(kGap) / 2 - Px(kMargin);
        m_layout.picture = {left, Px(kMargin), right - left, height};
        if (hasScope)
        {
            const int scope =
                std::clamp(height * kScopePercent / 100, Px(kLowestScope), Px(kHighestScope));
            m_layout.picture.height -= scope + Px(kGap);
            m_layout.scope = {left, m_layout.picture.Bottom() + Px(kGap), right - left, scope};
        }
    }

    int m_dpi;
    View m_view;
    int m_stepGap = 0;
    int m_width = 0;
    int m_height = 0;
    int m_left = 0; // of the panel's contents
    int m_right = 0;
    EditorLayout m_layout;
};

} // namespace

Geometry::Extent SmallestClient(int dpi) noexcept
{
    return {Scaled(kSmallest.width, dpi), Scaled(kSmallest.height, dpi)};
}

Geometry::Extent OpeningClient(int dpi) noexcept
{
    return {Scaled(kOpening.width, dpi), Scaled(kOpening.height, dpi)};
}

int FittingDpi(int dpi, Geometry::Extent room) noexcept
{
    constexpr int kLeast = 72; // letters below that cannot be read
    const auto fits = [&](int length, int smallest) { return length * kUnscaledDpi / smallest; };
    const int most =
        std::min(fits(room.width, kSmallest.width), fits(room.height, kSmallest.height));
    return std::min(dpi, std::max(most, kLeast));
}

EditorLayout LayoutOf(Geometry::Extent client, int dpi, View view, bool hasScope) noexcept
{
    return Placing(client, dpi, view).Layout(hasScope);
}

EditorLayout PictureAloneIn(Geometry::Extent client) noexcept
{
    EditorLayout layout;
    layout.picture = {0, 0, client.width, client.height};
    layout.panel = {client.width, 0, 0, client.height};
    layout.footerTop = client.height;
    return layout;
}

} // namespace ReferenceRenderer
