# The upper case of HP-ROMAN8.
#
# Made by data/toupper/generate.cc: the simple upper case of Unicode, from
# GLib, for the characters that iconv reads as HP-ROMAN8.
# These stay as they are, since the set does not have their upper case:
# \xBE \xDE \xF3

TOUPPER CHARSET HP-ROMAN8

a=A b=B c=C d=D e=E f=F g=G h=H i=I j=J k=K l=L m=M n=N o=O p=P q=Q r=R s=S
t=T u=U v=V w=W x=X y=Y z=Z \xB2=\xB1 \xB5=\xB4 \xB7=\xB6 \xC0=\xA2
\xC1=\xA4 \xC2=\xDF \xC3=\xAE \xC4=\xE0 \xC5=\xDC \xC6=\xE7 \xC7=\xED
\xC8=\xA1 \xC9=\xA3 \xCA=\xE8 \xCB=\xAD \xCC=\xD8 \xCD=\xA5 \xCE=\xDA
\xCF=\xDB \xD1=\xA6 \xD4=\xD0 \xD5=\xE5 \xD6=\xD2 \xD7=\xD3 \xD9=\xE6
\xDD=\xA7 \xE2=\xE1 \xE4=\xE3 \xEA=\xE9 \xEC=\xEB \xEF=\xEE \xF1=\xF0
