#include "client/GraphText.h"

#include <algorithm>
#include <cstdint>

namespace {

// A line of single characters, each in the colour of its lane.
class Canvas {
public:
    void put(std::size_t position, char character, std::uint64_t lineID) {
        if (cells_.size() <= position)
            cells_.resize(position + 1);
        if (cells_[position].character == ' ')
            cells_[position] = {character, lineID};
    }

    std::string text(const Output& output) const {
        static constexpr Colour laneColours[] = {Colour::Red,  Colour::Green,   Colour::Yellow,
                                                 Colour::Blue, Colour::Magenta, Colour::Cyan};
        std::string text;
        for (const Cell& cell : cells_) {
            if (cell.character == ' ')
                text += ' ';
            else if (cell.character == '*')
                text += output.bold("*");
            else
                text += output.in(laneColours[cell.lineID % std::size(laneColours)],
                                  std::string_view(&cell.character, 1));
        }
        return text;
    }

private:
    struct Cell {
        char character = ' ';
        std::uint64_t lineID = 0;
    };
    std::vector<Cell> cells_;
};

std::size_t position(std::uint64_t column) {
    return static_cast<std::size_t>(2 * column);
}

// From a column of the line above to one of the line below.
void drawMove(Canvas& canvas, std::uint64_t from, std::uint64_t to, std::uint64_t lineID) {
    if (from > to) {
        canvas.put(position(from) - 1, '/', lineID);
        for (std::size_t place = position(from) - 2; place > position(to); --place)
            canvas.put(place, '_', lineID);
    } else {
        canvas.put(position(from) + 1, '\\', lineID);
        for (std::size_t place = position(from) + 2; place < position(to); ++place)
            canvas.put(place, '_', lineID);
    }
}

}  // namespace

GraphText::GraphText(const RVGitCommitGraphLines& row, const Output& output) {
    Canvas commit;
    Canvas connector;
    commit.put(position(row.commitIndex()), '*', 0);
    bool moves = false;
    // Upright lanes first, so that a lane that passes below them does not break them.
    for (const RVGitCommitGraphLine& line : row.commitLines()) {
        if (!line.isStarting())
            commit.put(position(line.startIndex()), '|', line.lineID());
        if (line.startIndex() != line.endIndex())
            moves = true;
        else if (!line.isEnding())
            connector.put(position(line.endIndex()), '|', line.lineID());
    }
    for (const RVGitCommitGraphLine& line : row.commitLines())
        if (line.startIndex() != line.endIndex())
            drawMove(connector, line.startIndex(), line.endIndex(), line.lineID());
    commitLine = commit.text(output);
    if (moves)
        connectorLine = connector.text(output);
}
