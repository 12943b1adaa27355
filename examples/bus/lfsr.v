// Sixteen pseudo-random bits that step with every clock, the same in every run.
`timescale 1ns / 1ns
module lfsr #(
    parameter [15:0] SEED = 16'h0001
) (
    input             clk,
    input             rst,
    output reg [15:0] value
);
  always @(posedge clk)
    if (rst) value <= SEED;
    else value <= {value[14:0], value[15] ^ value[13] ^ value[12] ^ value[10]};
endmodule
