// JPEG data in pieces: their coefficients stay.
#include "tools/formats/jpeg/jpeg_join.h"

#include <gtest/gtest.h>

#include "tests/support/coefficients.h"
#include "tests/support/pictures.h"

namespace sorrelin::tool {
namespace {

using test::CoefficientsOf;
using test::JpegForm;
using test::Plane;

unsigned Pattern(int x, int y, int s) {
  return static_cast<unsigned>(x * x / 3 + y * (5 + s) + x * y) & 0xFF;
}

std::vector<BYTE> Piece(int left, int top, int width, int height, int components = 3) {
  JpegForm form;
  form.width = width;
  form.height = height;
  form.components = components;
  form.jfif = false;
  return test::MakeJpeg(form, [=](int x, int y, int s) { return Pattern(left + x, top + y, s); });
}

JpegPieces PiecesOf(int width, int height, int piece_width, int piece_height, bool tiles) {
  JpegPieces pieces;
  pieces.width = width;
  pieces.height = height;
  pieces.piece_width = piece_width;
  pieces.piece_height = piece_height;
  for (int y = 0; y < height; y += piece_height) {
    for (int x = 0; x < width; x += piece_width) {
      int const rows = tiles ? piece_height : std::min(piece_height, height - y);
      pieces.pieces.push_back(Piece(x, y, piece_width, rows));
    }
  }
  return pieces;
}

// Each block of a piece is where the piece is in the whole.
void ExpectCoefficientsStay(JpegPieces const& pieces, std::vector<BYTE> const& whole) {
  std::vector<Plane> const joined = CoefficientsOf(whole);
  size_t const across = static_cast<size_t>((pieces.width - 1) / pieces.piece_width + 1);
  for (size_t i = 0; i < pieces.pieces.size(); ++i) {
    std::vector<Plane> const planes = CoefficientsOf(pieces.pieces[i]);
    ASSERT_EQ(planes.size(), joined.size());
    for (size_t c = 0; c < planes.size(); ++c) {
      size_t const left = i % across * static_cast<size_t>(pieces.piece_width / 8);
      size_t const top = i / across * static_cast<size_t>(pieces.piece_height / 8);
      for (size_t y = 0; y < planes[c].size() && top + y < joined[c].size(); ++y) {
        for (size_t x = 0; x < planes[c][y].size() && left + x < joined[c][0].size(); ++x) {
          ASSERT_EQ(planes[c][y][x], joined[c][top + y][left + x]) << i << " " << x << " " << y;
        }
      }
    }
  }
}

TEST(JpegJoin, StripsKeepTheirCoefficients) {
  JpegPieces const pieces = PiecesOf(75, 60, 75, 16, false);
  auto const whole = JoinedJpeg(pieces);
  ASSERT_NE(whole, nullptr);
  auto const facts = ReadJpegFacts(*whole);
  EXPECT_EQ(facts->width, 75);
  EXPECT_EQ(facts->height, 60);
  EXPECT_EQ(facts->colours, JpegColours::kYcbcr);
  ExpectCoefficientsStay(pieces, *whole);
}

TEST(JpegJoin, TilesKeepTheirCoefficientsWithinThePicture) {
  JpegPieces const pieces = PiecesOf(75, 60, 32, 16, true);
  auto const whole = JoinedJpeg(pieces);
  ASSERT_NE(whole, nullptr);
  ExpectCoefficientsStay(pieces, *whole);
}

TEST(JpegJoin, SinglePieceIsKeptToTheByte) {
  JpegPieces const pieces = PiecesOf(75, 60, 75, 60, false);
  auto const whole = JoinedJpeg(pieces);
  ASSERT_NE(whole, nullptr);
  EXPECT_EQ(*whole, pieces.pieces[0]);
}

TEST(JpegJoin, SinglePieceOfRgbIsMarkedAsThat) {
  JpegForm form;
  form.rgb = true;
  form.jfif = false;
  std::vector<BYTE> piece = test::MakeJpeg(form, Pattern);
  JpegPieces pieces;
  pieces.width = 72;
  pieces.height = 36;
  pieces.piece_width = 72;
  pieces.piece_height = 36;
  pieces.colours = JpegColours::kYcbcr;
  pieces.pieces = {piece};
  auto const as_ycbcr = JoinedJpeg(pieces);
  ASSERT_NE(as_ycbcr, nullptr);
  EXPECT_EQ(ReadJpegFacts(*as_ycbcr)->colours, JpegColours::kYcbcr);
  EXPECT_EQ(CoefficientsOf(*as_ycbcr), CoefficientsOf(piece));
}

TEST(JpegJoin, PiecesThatDoNotFitAreRefused) {
  JpegPieces pieces = PiecesOf(75, 60, 75, 16, false);
  pieces.pieces.pop_back();
  EXPECT_EQ(JoinedJpeg(pieces), nullptr);
  pieces.pieces.push_back(Piece(0, 48, 67, 12));
  EXPECT_EQ(JoinedJpeg(pieces), nullptr);
  pieces.pieces.back() = Piece(0, 48, 75, 12, 1);
  EXPECT_EQ(JoinedJpeg(pieces), nullptr);
  pieces.pieces.back() = Piece(0, 48, 75, 11);
  EXPECT_EQ(JoinedJpeg(pieces), nullptr);
}

// Blocks of a strip that ends within a unit of the coding cannot be put below each other.
TEST(JpegJoin, StripsThatEndWithinABlockAreRefused) {
  EXPECT_EQ(JoinedJpeg(PiecesOf(75, 60, 75, 12, false)), nullptr);
}

TEST(JpegJoin, PiecesOfAnotherQualityAreRefused) {
  JpegPieces pieces = PiecesOf(64, 32, 64, 16, false);
  JpegForm form;
  form.width = 64;
  form.height = 16;
  form.jfif = false;
  form.quality = 30;
  pieces.pieces[1] = test::MakeJpeg(form, Pattern);
  EXPECT_EQ(JoinedJpeg(pieces), nullptr);
}

TEST(JpegJoin, DamagedPiecesAreRefused) {
  JpegPieces pieces = PiecesOf(64, 64, 64, 16, false);
  pieces.pieces[2].resize(pieces.pieces[2].size() / 2);
  EXPECT_EQ(JoinedJpeg(pieces), nullptr);
  pieces.pieces[2] = {1, 2, 3};
  EXPECT_EQ(JoinedJpeg(pieces), nullptr);
}

}  // namespace
}  // namespace sorrelin::tool
