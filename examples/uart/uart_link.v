// Two boards, each with a clock of its own, and one serial line between them: the sender runs on
// clk_a, the receiver and its buffer on clk_b. One bit takes 14 cycles of clk_a or 10 of clk_b.
`timescale 1ns / 1ns
module uart_link (
    input        clk_a,
    input        clk_b,
    input        rst,
    input  [7:0] a_data,
    input        a_valid,
    output       a_ready,
    output [7:0] b_data,
    output       b_valid,
    input        b_ready
);
  wire       line;
  wire [3:0] bit_index;
  wire [7:0] rx_data;
  wire       rx_valid;
  wire       frame_error;
  wire       empty;
  wire       full;
  wire [2:0] level;
  wire       overflow;

  assign b_valid = !empty;

  uart_tx #(.DIVISOR(14)) tx (
      .clk(clk_a),
      .rst(rst),
      .data(a_data),
      .valid(a_valid),
      .ready(a_ready),
      .line(line),
      .bit_index(bit_index)
  );

  uart_rx #(.DIVISOR(10)) rx (
      .clk(clk_b),
      .rst(rst),
      .line(line),
      .data(rx_data),
      .valid(rx_valid),
      .frame_error(frame_error)
  );

  fifo buffer (
      .clk(clk_b),
      .rst(rst),
      .in(rx_data),
      .push(rx_valid),
      .out(b_data),
      .pop(b_valid && b_ready),
      .empty(empty),
      .full(full),
      .level(level),
      .overflow(overflow)
  );
endmodule
